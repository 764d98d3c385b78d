#include "commands/Commands.h"

#include "text/Format.h"

#include <QCoreApplication>
#include <QFile>
#include <QStandardPaths>

#include <cerrno>
#include <cstring>
#include <unistd.h>
#include <vector>

namespace commands {
namespace {

const QString Script = "progkeysctl-sandbox"_s;

QString findScript()
{
    const QString beside =
        QStandardPaths::findExecutable(Script, {QCoreApplication::applicationDirPath()});
    QString found = beside.isEmpty() ? QStandardPaths::findExecutable(Script) : beside;
    if (found.isEmpty())
        throw Failure{ExitStatus::Failed,
                      format("%1 is neither beside this program nor on the PATH", Script),
                      "Install the package zelprogrammablekeys-devtools."_s};
    return found;
}

QList<QByteArray> scriptArguments(const cli::Arguments &arguments)
{
    QList<QByteArray> words;
    if (arguments.has("--page"))
        words << "--page";
    for (const char *option : {"--settings", "--data", "--logs", "--bin", "--port"})
        if (arguments.has(option))
            words << option << arguments.value(option);
    // Without blanks or an exponent, which bash does not read.
    if (arguments.has("--timeout"))
        words << "--timeout"
              << QByteArray::number(arguments.value("--timeout").toDouble(), 'g', 10);
    return words << "--" << arguments.values("COMMAND");
}

void run(cli::Session & /*session*/, const cli::Arguments &arguments)
{
    const QByteArray script = QFile::encodeName(findScript());
    QList<QByteArray> words = scriptArguments(arguments);
    std::vector<char *> vector = {const_cast<char *>(script.constData())};
    for (QByteArray &word : words)
        vector.push_back(word.data());
    vector.push_back(nullptr);
    execv(script.constData(), vector.data());
    throw Failure{ExitStatus::Failed, format("Cannot run %1: %2", QFile::decodeName(script),
                                             QString::fromLocal8Bit(std::strerror(errno)))};
}

} // namespace

cli::Command sandboxCommand()
{
    cli::Command command = cli::command(
        "sandbox", "run a command, or a shell, with a private phone",
        {cli::parameter("--settings DIR", "serve the settings in this directory",
                        cli::check::existingDirectory),
         cli::parameter("--data DIR", "keep the data in this directory", cli::check::notEmpty),
         cli::parameter("--logs DIR", "keep the logs in this directory", cli::check::notEmpty),
         cli::parameter("--bin DIR", "take the programs of the phone from this directory",
                        cli::check::existingDirectory),
         cli::parameter("--page", "serve the page of the phone on this machine and print its URL"),
         cli::parameter("--port NUMBER", "serve the page on this port",
                        cli::check::integer(1, 65535)),
         cli::parameter("[COMMAND...]", "the command, after --; default: your shell")},
        {}, run);
    command.notes =
        "Without --settings, there are no defaults and the key limit is 100. Data and logs are "
        "temporary unless you specify a directory for them. The exit status is that of COMMAND."_s;
    return command;
}

} // namespace commands
