#include "sandbox/Shell.h"

#include <QFile>
#include <QFileInfo>

namespace sandbox {
namespace {

QByteArray quoted(QByteArray text)
{
    return '\'' + text.replace('\'', "'\\''") + '\'';
}

// The user's own file may set the PATH and the prompt anew.
QByteArray startFile(const QByteArray &path)
{
    return "[ ! -f ~/.bashrc ] || . ~/.bashrc\n"
           "PATH=" +
           quoted(path) +
           ":$PATH\n"
           "PS1=\"(phone) $PS1\"\n";
}

} // namespace

Program userShell(const Directory &directory, const QString &path)
{
    QByteArray shell = qgetenv("SHELL");
    if (shell.isEmpty())
        shell = "/bin/sh";
    if (QFileInfo(QFile::decodeName(shell)).fileName() != QLatin1String("bash"))
        return {shell, {}, {}, {}};
    const QString name = QStringLiteral("bashrc");
    directory.write(name, startFile(QFile::encodeName(path)));
    return {shell, {"--rcfile", QFile::encodeName(directory.file(name))}, {}, {}};
}

} // namespace sandbox
