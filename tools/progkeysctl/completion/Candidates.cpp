#include "completion/Candidates.h"

#include "completion/OptionShape.h"

#include <algorithm>

namespace completion {
namespace {

client::BusChoice busOf(const HalfTyped &line)
{
    const CLI::Option *address = line.find("--address");
    const CLI::Option *session = line.find("--session");
    if (address && !line.given(*address).empty())
        return {client::BusChoice::Address, QString::fromStdString(line.given(*address).back())};
    const bool isSession = session && line.isGiven(*session);
    return {isSession ? client::BusChoice::Session : client::BusChoice::System, {}};
}

void add(Answer &answer, const std::string &word)
{
    if (std::find(answer.words.begin(), answer.words.end(), word) == answer.words.end())
        answer.words.push_back(word);
}

// The long names are enough, but a short one that is typed stands.
void addOption(Answer &answer, const CLI::Option &option, const std::string &typed)
{
    for (const std::string &name : typedNames(option))
        if (name.size() > 2 || option.get_lnames().empty() || name == typed)
            add(answer, name);
}

void addOptions(Answer &answer, const HalfTyped &line)
{
    for (const CLI::App *app : {&line.command(), &line.program()})
        for (const CLI::Option *option : app->get_options())
            if (!line.isSettled(*option))
                addOption(answer, *option, line.typed());
}

void addFree(Answer &answer, const HalfTyped &line)
{
    const bool isOption = line.typed().rfind('-', 0) == 0;
    const std::vector<const CLI::App *> commands = shownCommands(line.command());
    for (const CLI::App *command : commands)
        add(answer, command->get_name());
    if (!isOption && (line.wanted() || !commands.empty()))
        return;
    addOptions(answer, line);
    answer.kind = Answer::Words;
}

} // namespace

Answer candidates(const CLI::App &program, const ShellLine &line)
{
    if (line.isRedirection())
        return {Answer::Files, {}, false};
    if (line.before().empty())
        return {};
    const std::vector<std::string> words(line.before().begin() + 1, line.before().end());
    const HalfTyped half(program, words, line.word());
    Answer answer;
    if (half.wanted())
        answer = valuesOf(*half.wanted(), half, PhoneRows(busOf(half)));
    if (half.isFree())
        addFree(answer, half);
    for (std::string &word : answer.words)
        word.insert(0, half.head());
    const auto isOther = [&](const std::string &word) { return word.rfind(line.word(), 0) != 0; };
    answer.words.erase(std::remove_if(answer.words.begin(), answer.words.end(), isOther),
                       answer.words.end());
    return answer;
}

} // namespace completion
