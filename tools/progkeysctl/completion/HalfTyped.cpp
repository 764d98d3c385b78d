#include "completion/HalfTyped.h"

#include "completion/OptionShape.h"

#include <algorithm>

namespace completion {
namespace {

bool beginsWith(const std::string &text, const char *begin)
{
    return text.rfind(begin, 0) == 0;
}

bool isShort(const std::string &word)
{
    const bool isNumber = word.size() > 1 && word[1] >= '0' && word[1] <= '9';
    return word.size() > 1 && word[0] == '-' && word[1] != '-' && !isNumber;
}

const CLI::Option *ownOption(const CLI::App &app, const std::string &name)
{
    for (const CLI::Option *option : app.get_options()) {
        const std::vector<std::string> names = typedNames(*option);
        if (std::find(names.begin(), names.end(), name) != names.end())
            return option;
    }
    return nullptr;
}

} // namespace

HalfTyped::HalfTyped(const CLI::App &program, const std::vector<std::string> &before,
                     const std::string &word)
    : m_program(program), m_command(&program)
{
    for (const std::string &each : before)
        take(each);
    settle(word);
}

const std::vector<std::string> &HalfTyped::given(const CLI::Option &option) const
{
    static const std::vector<std::string> nothing;
    const auto found = m_given.find(&option);
    return found == m_given.end() ? nothing : found->second;
}

bool HalfTyped::isGiven(const CLI::Option &option) const
{
    return m_given.count(&option) > 0;
}

bool HalfTyped::isSettled(const CLI::Option &option) const
{
    return isGiven(option) && !takesSeveral(option);
}

const CLI::Option *HalfTyped::find(const std::string &name) const
{
    const CLI::Option *option = ownOption(*m_command, name);
    return option ? option : ownOption(m_program, name);
}

void HalfTyped::take(const std::string &word)
{
    if (takeAsArgument(word))
        return;
    if (!m_isAfterMark && word == "--")
        m_isAfterMark = true;
    else if (!m_isAfterMark && beginsWith(word, "--"))
        takeLong(word);
    else if (!m_isAfterMark && isShort(word))
        takeShort(word);
    else
        takePlain(word);
}

// The first argument of an option may look as it likes; more of them end where an option begins.
bool HalfTyped::takeAsArgument(const std::string &word)
{
    if (m_open && !m_isArgumentMissing && (beginsWith(word, "--") || isShort(word)))
        m_open = nullptr;
    if (!m_open)
        return false;
    m_given[m_open].push_back(word);
    m_isArgumentMissing = false;
    if (!takesSeveral(*m_open))
        m_open = nullptr;
    return true;
}

void HalfTyped::begin(const CLI::Option *option)
{
    if (!option)
        return;
    m_given[option];
    m_isArgumentMissing = takesArgument(*option);
    m_open = m_isArgumentMissing ? option : nullptr;
}

void HalfTyped::begin(const CLI::Option *option, const std::string &argument)
{
    begin(option);
    if (option)
        takeAsArgument(argument);
}

void HalfTyped::takeLong(const std::string &word)
{
    const std::size_t equals = word.find('=');
    const CLI::Option *option = find(word.substr(0, equals));
    if (equals == std::string::npos)
        begin(option);
    else
        begin(option, word.substr(equals + 1));
}

void HalfTyped::takeShort(const std::string &word)
{
    for (std::size_t i = 1; i < word.size(); ++i) {
        const CLI::Option *option = find(std::string("-") + word[i]);
        if (option && takesArgument(*option) && i + 1 < word.size()) {
            begin(option, word.substr(i + 1));
            return;
        }
        begin(option);
    }
}

void HalfTyped::takePlain(const std::string &word)
{
    const CLI::App *command = m_isAfterMark ? nullptr : shownCommand(*m_command, word);
    if (command)
        m_command = command;
    else if (const CLI::Option *positional = nextPositional())
        m_given[positional].push_back(word);
}

const CLI::Option *HalfTyped::nextPositional() const
{
    for (const CLI::Option *option : m_command->get_options())
        if (isPositional(*option) && (takesSeveral(*option) || given(*option).empty()))
            return option;
    return nullptr;
}

void HalfTyped::settle(const std::string &word)
{
    m_typed = word;
    m_wanted = m_open;
    m_isFree = !m_open || !m_isArgumentMissing;
    if (!m_isFree)
        return;
    m_isFree = !m_isAfterMark;
    const std::size_t equals = word.find('=');
    if (m_isFree && beginsWith(word, "--") && equals != std::string::npos) {
        m_isFree = false;
        m_wanted = find(word.substr(0, equals));
        m_head = word.substr(0, equals + 1);
        m_typed = word.substr(equals + 1);
    } else if (!m_wanted) {
        m_wanted = nextPositional();
    }
}

} // namespace completion
