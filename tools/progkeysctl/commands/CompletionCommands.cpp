#include "commands/CompletionCommands.h"

#include "completion/Candidates.h"
#include "completion/CommandList.h"

#include <QJsonDocument>

#include <algorithm>
#include <csignal>
#include <memory>
#include <sys/time.h>
#include <unistd.h>

namespace commands {
namespace {

struct Given
{
    std::string line;
    std::string breaks;
};

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

ExitStatus complete(cli::Session &session, const CLI::App &program, const Given &given)
{
    endSoon();
    const completion::ShellLine line(given.line);
    const completion::Answer answer = completion::candidates(program, line);
    std::string text = nameOf(answer);
    for (const std::string &word : answer.words) {
        const std::string replacement = line.replacement(word, given.breaks);
        if (!replacement.empty() && isOneLine(replacement))
            text += "\n" + replacement;
    }
    session.out().raw(QByteArray::fromStdString(text + "\n"));
    return ExitStatus::Done;
}

void addComplete(cli::CommandLine &line)
{
    const auto given = std::make_shared<Given>();
    CLI::App *command = line.addCommand("__complete", "answer what may stand at the end of a line",
                                        [given, &program = line.app()](cli::Session &session) {
                                            return complete(session, program, *given);
                                        });
    command->add_option("LINE", given->line, "the line up to the cursor")->required();
    command->add_option("BREAKS", given->breaks, "where the shell begins a new piece of a word");
    command->group("");
}

ExitStatus list(cli::Session &session, const CLI::App &program)
{
    session.out().raw(QJsonDocument(completion::commandList(program)).toJson());
    return ExitStatus::Done;
}

} // namespace

void addCompletionCommands(cli::CommandLine &line)
{
    addComplete(line);
    line.addCommand(
            "__commands", "tell of every command, as JSON",
            [&program = line.app()](cli::Session &session) { return list(session, program); })
        ->group("");
}

} // namespace commands
