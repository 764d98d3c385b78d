#include "commands/SandboxCommand.h"

#include "outcome/Failure.h"
#include "sandbox/Guard.h"
#include "sandbox/Sandbox.h"
#include "sandbox/Shell.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace commands {
namespace {

constexpr double StartSeconds = 20;

struct Given
{
    std::string settings;
    std::string data;
    std::string logs;
    std::string bin;
    std::vector<std::string> command;
};

QString toPath(const std::string &text)
{
    return QFile::decodeName(text.c_str());
}

// The words as they were typed: those that the parser hands over have lost their brackets, where
// they had some.
QList<QByteArray> wordsOf(const Given &given)
{
    QFile commandLine(QStringLiteral("/proc/self/cmdline"));
    QList<QByteArray> words;
    if (commandLine.open(QIODevice::ReadOnly))
        words = commandLine.readAll().split('\0');
    const auto mark = words.indexOf("--");
    if (mark >= 0)
        return words.mid(mark + 1, words.size() - mark - 2);
    words.clear();
    for (const std::string &word : given.command)
        words.append(QByteArray::fromStdString(word));
    return words;
}

void greet(output::Output &out, const sandbox::Sandbox &phone, const sandbox::Directory &directory)
{
    out.say(QStringLiteral("A phone of your own: a bus, SettingsManager and the service, until "
                           "this shell ends."));
    out.say(QString());
    out.say(QStringLiteral("  bus       ") + QString::fromLatin1(phone.busAddress()));
    const auto tell = [&](const char *title, const QString &path) {
        out.say(QString::fromLatin1(title) + directory.whereIs(path));
    };
    tell("  settings  ", QStringLiteral("settings"));
    tell("  data      ", QStringLiteral("data"));
    tell("  logs      ", QStringLiteral("logs"));
    out.say(QString());
    out.say(QStringLiteral("Try:    progkeysctl status"));
    out.say(QStringLiteral("        progkeysctl key list"));
    out.say(QStringLiteral("        progkeysctl monitor"));
    out.say(QStringLiteral("Leave:  exit"));
    out.say(QString());
    out.flush();
}

int runIn(sandbox::Sandbox &phone, sandbox::Program command, int endingSignal)
{
    constexpr int NotFound = 127;
    constexpr int NotExecutable = 126;
    command.environment = phone.environment(sandbox::ownDirectory());
    try {
        return phone.run(command, endingSignal);
    } catch (const sandbox::CannotRun &error) {
        const int status = error.error == ENOENT ? NotFound : NotExecutable;
        throw Failure{static_cast<ExitStatus>(status), error.message(), QString()};
    }
}

int runShell(cli::Session &session, sandbox::Sandbox &phone, const sandbox::Directory &directory)
{
    if (isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1)
        greet(session.out(), phone, directory);
    // At a terminal a shell takes no notice of other arrivals.
    return runIn(phone, sandbox::userShell(directory, sandbox::ownDirectory()), SIGHUP);
}

ExitStatus run(cli::Session &session, const Given &given)
{
    const sandbox::Executables executables = sandbox::findExecutables(toPath(given.bin));
    const QList<QByteArray> words = wordsOf(given);
    const sandbox::Directory directory(
        {toPath(given.settings), toPath(given.data), toPath(given.logs)});
    const auto work = [&](const sandbox::Signals &arrivals) {
        try {
            sandbox::Sandbox phone(executables, directory, arrivals,
                                   session.timeoutMs(StartSeconds));
            if (words.isEmpty())
                return runShell(session, phone, directory);
            return runIn(phone, {words.first(), words.mid(1), {}, {}}, SIGTERM);
        } catch (const sandbox::Interrupted &interrupted) {
            return 128 + interrupted.signal;
        }
    };
    return static_cast<ExitStatus>(sandbox::guarded(work));
}

} // namespace

void addSandboxCommand(cli::CommandLine &line)
{
    // Help shows what a check is called beside the name of the type.
    const CLI::Validator existing = CLI::ExistingDirectory.description("");
    const auto given = std::make_shared<Given>();
    CLI::App *command =
        line.addCommand("sandbox", "run a command, or a shell, with a phone of its own",
                        [given](cli::Session &session) { return run(session, *given); });
    command
        ->add_option("--settings", given->settings,
                     "serve the settings in this directory, as they are at each moment")
        ->type_name(cli::type::Directory)
        ->check(existing);
    command->add_option("--data", given->data, "keep the data in this directory")
        ->type_name(cli::type::Directory);
    command->add_option("--logs", given->logs, "keep the logs in this directory")
        ->type_name(cli::type::Directory);
    command->add_option("--bin", given->bin, "take the phone's programs from this directory")
        ->type_name(cli::type::Directory)
        ->check(existing);
    command->add_option("COMMAND", given->command, "what to run, after --; else the user's shell")
        ->type_name("");
    command->footer("What the options do not name is temporary: no keys, no defaults, and room "
                    "for 100 keys.\nThe status is that of COMMAND.");
}

} // namespace commands
