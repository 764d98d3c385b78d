#include "SettingsPeer.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>
#include <QEventLoop>
#include <QFile>
#include <QTimer>

namespace {

constexpr int LimitMs = 10000;

bool waitForName(const QString &name)
{
    QDBusConnection bus = QDBusConnection::systemBus();
    const QDBusServiceWatcher watcher(name, bus, QDBusServiceWatcher::WatchForRegistration);
    QEventLoop loop;
    QObject::connect(&watcher, &QDBusServiceWatcher::serviceRegistered, &loop, &QEventLoop::quit);
    QTimer::singleShot(LimitMs, &loop, &QEventLoop::quit);
    if (!bus.interface()->isServiceRegistered(name))
        loop.exec();
    return bus.interface()->isServiceRegistered(name);
}

} // namespace

SettingsPeer::SettingsPeer(const QString &program)
{
    m_process.setProcessChannelMode(QProcess::ForwardedChannels);
    m_process.start(program, {m_directory.path()});
    if (!m_process.waitForStarted() ||
        !waitForName(QStringLiteral("com.velmora.Tessaro.SettingsManager")))
        qFatal("The SettingsManager peer does not come up");
}

SettingsPeer::~SettingsPeer()
{
    m_process.terminate();
    m_process.waitForFinished();
}

void SettingsPeer::set(const QString &name, const QString &value) const
{
    QFile file(m_directory.filePath(name));
    const QByteArray text = value.toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        qFatal("Cannot write a setting");
}
