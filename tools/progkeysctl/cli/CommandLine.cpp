#include "cli/CommandLine.h"

#include "cli/Help.h"
#include "cli/Parser.h"
#include "cli/Session.h"
#include "outcome/Failure.h"

#include <cstdio>
#include <unistd.h>

namespace cli {
namespace {

void print(const QString &text)
{
    output::Output out({});
    out.say(text);
    out.flush();
}

void printHelpOn(const QList<Command> &commands, const Command *command)
{
    constexpr int UsualWidth = 80;
    const int width = output::Terminal::of(STDOUT_FILENO).width();
    print(helpText(commands, command, width > 0 ? width : UsualWidth));
}

} // namespace

int CommandLine::execute(int argc, char **argv) const
{
    try {
        return static_cast<int>(run({argv + 1, argv + argc}));
    } catch (const Failure &failure) {
        std::fflush(stdout);
        output::sayFailure(failure);
        return static_cast<int>(failure.status);
    }
}

ExitStatus CommandLine::run(const QList<QByteArray> &words) const
{
    const ParsedLine line = parse(m_commands, words);
    output::setColourChoice(line.arguments.text("--color"));
    if (line.arguments.has("--help")) {
        printHelpOn(m_commands, line.command);
        return ExitStatus::Done;
    }
    if (line.arguments.has("--version")) {
        print(QStringLiteral(PROGKEYSCTL_VERSION));
        return ExitStatus::Done;
    }
    requireComplete(line);
    Session session(*line.command, line.arguments, *this);
    const ExitStatus status = line.command->run(session, line.arguments);
    session.out().flush();
    return status;
}

void CommandLine::printHelp(const QList<QByteArray> &words) const
{
    printHelpOn(m_commands, parse(m_commands, words).command);
}

} // namespace cli
