#include "commands/SandboxCommand.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "outcome/Failure.h"
#include "sandbox/Guard.h"
#include "sandbox/Sandbox.h"
#include "sandbox/Shell.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace commands {
namespace {

constexpr double StartSeconds = 20;

// The words as they were typed: those that the parser hands over have lost their brackets, where
// they had some.
QList<QByteArray> wordsOf(const cli::Arguments &arguments)
{
    QFile commandLine(QStringLiteral("/proc/self/cmdline"));
    QList<QByteArray> words;
    if (commandLine.open(QIODevice::ReadOnly))
        words = commandLine.readAll().split('\0');
    const auto mark = words.indexOf("--");
    if (mark >= 0)
        return words.mid(mark + 1, words.size() - mark - 2);
    return arguments.values(QStringLiteral("COMMAND"));
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

ExitStatus run(cli::Session &session, const cli::Arguments &arguments)
{
    const sandbox::Executables executables = sandbox::findExecutables(arguments.path("--bin"));
    const QList<QByteArray> words = wordsOf(arguments);
    const sandbox::Directory directory(
        {arguments.path("--settings"), arguments.path("--data"), arguments.path("--logs")});
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

cli::Command sandboxCommand()
{
    using namespace cli::type;
    cli::Command command = cli::command(
        "sandbox", "run a command, or a shell, with a phone of its own",
        {cli::option("--settings", existingDirectory(),
                     "serve the settings in this directory, as they are at each moment"),
         cli::option("--data", directory(), "keep the data in this directory"),
         cli::option("--logs", directory(), "keep the logs in this directory"),
         cli::option("--bin", existingDirectory(), "take the phone's programs from this directory"),
         cli::argument("COMMAND", text("COMMAND"), "what to run, after --; else the user's shell")
             .optional()
             .repeatable()},
        run);
    command.notes = QStringLiteral("What the options do not name is temporary: no keys, no "
                                   "defaults, and room for 100 keys.\nThe status is that of "
                                   "COMMAND.");
    return command;
}

} // namespace commands
