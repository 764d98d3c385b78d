#include "cli/CommandLine.h"

#include "cli/CommonOptions.h"
#include "cli/Help.h"
#include "cli/LineChecks.h"
#include "outcome/Failure.h"
#include "outcome/Suggestion.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace cli {
namespace {

constexpr int UsualWidth = 80;

void print(const QString &text)
{
    output::Output out({});
    out.say(text);
    out.flush();
}

[[noreturn]] void throwUnknownCommand(const QString &name, const QList<Command> &commands)
{
    QStringList names;
    for (const Command &command : commands)
        names.append(command.name());
    throw Failure{
        ExitStatus::Usage, QStringLiteral("Unknown command \"%1\"").arg(name),
        outcome::withSuggestion(name, names, QStringLiteral("See \"progkeysctl --help\"."))};
}

int helpWidth()
{
    const int width = output::Terminal::of(STDOUT_FILENO).width();
    return width > 0 ? width : UsualWidth;
}

} // namespace

CommandLine::CommandLine(const QList<Command> &commands)
    : m_commands(commands), m_parser(commonOptions(), commands)
{
}

ExitStatus CommandLine::run(int argc, char **argv)
{
    const ParsedLine line = m_parser.parse(argc, argv);
    output::setColourChoice(colourFrom(line.arguments));
    if (line.arguments.has("--help")) {
        printHelp(line.command ? line.command->words : QStringList());
        return ExitStatus::Done;
    }
    if (line.arguments.has("--version")) {
        print(QStringLiteral(PROGKEYSCTL_VERSION));
        return ExitStatus::Done;
    }
    requireValid(line, m_commands);
    Session session(optionsFrom(line.arguments), *this);
    const ExitStatus status = line.command->run(session, line.arguments);
    session.out().flush();
    return status;
}

void CommandLine::printHelp(const QStringList &words) const
{
    const auto hasWords = [&](const Command &command) { return command.words == words; };
    const auto found = std::find_if(m_commands.begin(), m_commands.end(), hasWords);
    if (found == m_commands.end() && !words.isEmpty())
        throwUnknownCommand(words.join(QLatin1Char(' ')), m_commands);
    print(helpText(m_commands, words.isEmpty() ? nullptr : &*found, helpWidth()));
}

int CommandLine::execute(int argc, char **argv)
{
    try {
        return static_cast<int>(run(argc, argv));
    } catch (const Failure &failure) {
        std::fflush(stdout);
        output::sayFailure(failure);
        return static_cast<int>(failure.status);
    }
}

} // namespace cli
