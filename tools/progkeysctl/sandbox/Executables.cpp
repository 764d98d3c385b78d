#include "sandbox/Executables.h"

#include "outcome/Failure.h"

#include <QCoreApplication>
#include <QStandardPaths>

namespace sandbox {
namespace {

const QLatin1String ServicesBeside("/../libexec");

QString findModule(const QString &name, const QString &directory)
{
    const QString place = directory.isEmpty() ? ownDirectory() : directory;
    // A build has all of them in one place; where they are installed, services stand apart.
    QString found = QStandardPaths::findExecutable(name, {place, place + ServicesBeside});
    if (found.isEmpty() && directory.isEmpty())
        found = QStandardPaths::findExecutable(name);
    if (!found.isEmpty())
        return found;
    const QString elsewhere = directory.isEmpty() ? QStringLiteral(" nor on the PATH") : QString();
    throw Failure{ExitStatus::Failed,
                  QStringLiteral("There is no %1 in %2%3").arg(name, place, elsewhere),
                  QStringLiteral("Say where it is with --bin DIR.")};
}

QString findBus()
{
    QString found = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
    if (found.isEmpty())
        throw Failure{ExitStatus::Failed, QStringLiteral("There is no dbus-daemon on the PATH"),
                      QStringLiteral("Install the Debian package dbus-daemon.")};
    return found;
}

} // namespace

QString ownDirectory()
{
    return QCoreApplication::applicationDirPath();
}

Executables findExecutables(const QString &directory)
{
    return {findBus(), findModule(QStringLiteral("settingsmanager"), directory),
            findModule(QStringLiteral("zelprogrammablekeys"), directory)};
}

} // namespace sandbox
