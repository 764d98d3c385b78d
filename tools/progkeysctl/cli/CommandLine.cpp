#include "cli/CommandLine.h"

#include "cli/Help.h"
#include "cli/Parser.h"
#include "cli/Session.h"

namespace cli {
namespace {

ExitStatus print(const QString &text)
{
    output::Output out({});
    out.say(text);
    out.flush();
    return ExitStatus::Done;
}

} // namespace

ExitStatus run(const QList<Command> &commands, const QList<QByteArray> &words)
{
    const ParsedLine line = parse(commands, words);
    output::setColorChoice(line.arguments.text("--color"));
    if (line.arguments.has("--help"))
        return print(helpText(commands, *line.command));
    if (line.arguments.has("--version"))
        return print(QStringLiteral(PROGKEYSCTL_VERSION));
    Session session(*line.command, line.arguments);
    line.command->run(session, line.arguments);
    session.out().flush();
    return session.status();
}

} // namespace cli
