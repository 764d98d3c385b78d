#include "commands/CompletionCommands.h"

#include "cli/CommandLine.h"
#include "cli/Session.h"
#include "completion/Candidates.h"
#include "completion/CommandList.h"

#include <QJsonDocument>

#include <algorithm>
#include <csignal>
#include <sys/time.h>
#include <unistd.h>

namespace commands {
namespace {

void endSilently(int /*signal*/)
{
    _exit(0);
}

// A bus that takes a connection and says nothing is not waited for.
void endSoon()
{
    constexpr int Seconds = 2;
    std::signal(SIGALRM, endSilently);
    alarm(Seconds);
}

const char *nameOf(const completion::Answer &answer)
{
    switch (answer.kind) {
    case completion::Answer::Files:
        return "files";
    case completion::Answer::Directories:
        return "directories";
    case completion::Answer::Commands:
        return "commands";
    default:
        return answer.isOpen ? "open" : "words";
    }
}

// The shell takes a line for a candidate.
bool isOneLine(const std::string &word)
{
    return std::none_of(word.begin(), word.end(),
                        [](unsigned char each) { return each < ' ' || each == 0x7f; });
}

ExitStatus complete(cli::Session &session, const cli::Arguments &arguments)
{
    endSoon();
    const completion::ShellLine line(arguments.text("LINE").toStdString());
    const std::string breaks = arguments.text("BREAKS").toStdString();
    const completion::Answer answer = completion::candidates(session.line().parser().app(), line);
    std::string text = nameOf(answer);
    for (const std::string &word : answer.words) {
        const std::string replacement = line.replacement(word, breaks);
        if (!replacement.empty() && isOneLine(replacement))
            text += "\n" + replacement;
    }
    session.out().raw(QByteArray::fromStdString(text + "\n"));
    return ExitStatus::Done;
}

ExitStatus list(cli::Session &session, const cli::Arguments & /*arguments*/)
{
    const QJsonObject list = completion::commandList(session.line().commands());
    session.out().raw(QJsonDocument(list).toJson());
    return ExitStatus::Done;
}

} // namespace

QList<cli::Command> completionCommands()
{
    QList<cli::Command> commands = {
        cli::command("__complete", "answer what may stand at the end of a line",
                     {cli::argument("LINE", cli::type::text("LINE"), "the line up to the cursor"),
                      cli::argument("BREAKS", cli::type::text("BREAKS"),
                                    "where the shell begins a new piece of a word")
                          .optional()},
                     complete),
        cli::command("__commands", "tell of every command, as JSON", {}, list)};
    for (cli::Command &command : commands)
        command.isHidden = true;
    return commands;
}

} // namespace commands
