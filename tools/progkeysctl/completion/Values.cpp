#include "completion/Values.h"

#include "completion/OptionShape.h"
#include "fields/Fields.h"

#include <algorithm>
#include <set>

namespace completion {
namespace {

using Words = std::vector<std::string>;

struct Asked
{
    const CLI::Option &option;
    const HalfTyped &line;
    const PhoneRows &phone;
};

Words keyIds(const Asked &asked)
{
    Words ids;
    const ListKey keys = asked.phone.keys();
    for (const Key &key : keys)
        ids.push_back(std::to_string(key.idKey));
    return ids;
}

Words actionIds(const Asked &asked)
{
    Words ids;
    const ListAction actions = asked.phone.actions();
    for (const Action &action : actions)
        ids.push_back(std::to_string(action.idAction));
    return ids;
}

Words containers(const Asked &asked)
{
    std::set<std::string> names;
    const ListKey keys = asked.phone.keys();
    for (const Key &key : keys)
        if (!key.container.isEmpty())
            names.insert(key.container.toStdString());
    return {names.begin(), names.end()};
}

Words modules(const Asked &asked)
{
    std::set<int> addresses;
    const ListKey keys = asked.phone.keys();
    for (const Key &key : keys)
        if (key.type == KeyType::AddOnModule)
            addresses.insert(key.aom_addr);
    Words words;
    for (const int address : addresses)
        words.push_back(std::to_string(address));
    return words;
}

Words moduleKeys(const Asked &asked)
{
    std::set<std::pair<int, int>> places;
    const ListKey keys = asked.phone.keys();
    for (const Key &key : keys)
        if (key.type == KeyType::AddOnModule)
            places.emplace(key.aom_addr, key.position);
    Words words;
    for (const auto &[address, number] : places)
        words.push_back(std::to_string(address) + "/" + std::to_string(number));
    return words;
}

// What the service sends, and what it waits for.
Words events(const Asked &)
{
    return {"ACTION_CREATE_NTF",
            "ACTION_DELETE_NTF",
            "ACTION_MODIFY_NTF",
            "AOMKEY_PRESS_NTF",
            "AOM_KEY_PRESS_EVENT",
            "AOM_SET_ICON_PROPERTY_REC",
            "AOM_SET_LABEL_PROPERTY_REC",
            "DB_RESET_NTF",
            "KEY_CREATE_NTF",
            "KEY_DELETE_NTF",
            "KEY_MODIFY_NTF",
            "KO_PROGKEYS_DB_FULL"};
}

template <typename Record>
Words fieldNames()
{
    Words names;
    for (const fields::Field<Record> &field : fields::of<Record>())
        names.push_back(field.name.toStdString());
    return names;
}

Words withEquals(Words words)
{
    for (std::string &word : words)
        word += '=';
    return words;
}

// Those of a row that is given an identifier by the service, and keeps it, begin behind it.
template <typename Record>
Words assignableFields()
{
    const Words names = fieldNames<Record>();
    return withEquals({names.begin() + 1, names.end()});
}

Answer behind(const std::string &name, const Words &values)
{
    const std::string begin = name + '=';
    Answer answer;
    for (const std::string &value : values)
        answer.words.push_back(begin + value);
    return answer;
}

Answer keyAssignments(const Asked &asked)
{
    const std::string &typed = asked.line.typed();
    const std::size_t equals = typed.find('=');
    const std::string name = typed.substr(0, equals);
    if (equals == std::string::npos)
        return {Answer::Words, assignableFields<Key>(), true};
    if (name == "idAction")
        return behind(name, actionIds(asked));
    if (name == "container")
        return behind(name, containers(asked));
    return {};
}

Answer keyMoves(const Asked &asked)
{
    if (asked.line.typed().find('=') != std::string::npos)
        return {};
    return {Answer::Words, withEquals(keyIds(asked)), true};
}

Words fieldsOf(const CLI::App &command)
{
    const std::string group = command.get_parent() ? command.get_parent()->get_name() : "";
    if (group == "key")
        return fieldNames<Key>();
    return group == "action" ? fieldNames<Action>() : Words();
}

// Of a list with commas the last part is completed.
Answer fieldLists(const Asked &asked)
{
    const std::string &typed = asked.line.typed();
    const std::string before = typed.substr(0, typed.rfind(',') + 1);
    const Words named = CLI::detail::split(before, ',');
    Answer answer{Answer::Words, {}, true};
    for (const std::string &name : fieldsOf(asked.line.command()))
        if (std::find(named.begin(), named.end(), name) == named.end())
            answer.words.push_back(before + name);
    return answer;
}

Answer programs(const Asked &asked)
{
    return {asked.line.given(asked.option).empty() ? Answer::Commands : Answer::Files, {}, false};
}

template <Words (*list)(const Asked &)>
Answer plain(const Asked &asked)
{
    return {Answer::Words, list(asked), false};
}

template <Answer::Kind kind>
Answer ofShell(const Asked &)
{
    return {kind, {}, false};
}

Answer actionAssignments(const Asked &)
{
    return {Answer::Words, assignableFields<Action>(), true};
}

struct Source
{
    const char *type;
    Answer (*values)(const Asked &);
};

// What has no name of a type is a program to run.
constexpr Source Sources[] = {
    {"KEY_ID", plain<keyIds>},
    {"ACTION_ID", plain<actionIds>},
    {"CONTAINER", plain<containers>},
    {"MODULE", plain<modules>},
    {"MODULE/NUMBER", plain<moduleKeys>},
    {"EVENT", plain<events>},
    {"KEY_FIELD=VALUE", keyAssignments},
    {"ACTION_FIELD=VALUE", actionAssignments},
    {"KEY_ID=POSITION", keyMoves},
    {"FILE", ofShell<Answer::Files>},
    {"DIR", ofShell<Answer::Directories>},
    {"FIELD,...", fieldLists},
    {"COMMAND", programs},
};

bool isRepeated(const std::string &word, const Words &given)
{
    return std::any_of(given.begin(), given.end(), [&](const std::string &each) {
        return each == word || (word.back() == '=' && each.rfind(word, 0) == 0);
    });
}

} // namespace

Answer valuesOf(const CLI::Option &option, const HalfTyped &line, const PhoneRows &phone)
{
    const std::string type = argumentName(option);
    Answer answer{Answer::Words, choices(option), false};
    for (const Source &source : Sources)
        if (takesArgument(option) && type == source.type)
            answer = source.values({option, line, phone});
    const Words &given = line.given(option);
    const auto repeated = [&](const std::string &word) { return isRepeated(word, given); };
    answer.words.erase(std::remove_if(answer.words.begin(), answer.words.end(), repeated),
                       answer.words.end());
    return answer;
}

} // namespace completion
