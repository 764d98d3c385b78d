#include "sandbox/MessageBus.h"

#include <QFile>

namespace sandbox {
namespace {

// No limits are named, so the daemon keeps its own defaults, which are those of a system bus.
constexpr const char *Configuration = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>ADDRESS</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow receive_sender="*"/>
  </policy>
</busconfig>
)";

// As addresses escape it; what XML would stumble over is escaped with that.
QByteArray escapedSocket(const Directory &directory)
{
    return QFile::encodeName(directory.file(QStringLiteral("bus"))).toPercentEncoding("/", "~");
}

} // namespace

MessageBus::MessageBus(const QString &daemon, const Directory &directory, Startup &startup,
                       BusProbe &probe)
    : m_address("unix:path=" + escapedSocket(directory))
{
    const QString file = directory.file(QStringLiteral("bus.conf"));
    directory.write(QStringLiteral("bus.conf"),
                    QByteArray(Configuration).replace("ADDRESS", m_address));
    const Program program{QFile::encodeName(daemon),
                          {"--config-file=" + QFile::encodeName(file), "--nofork", "--nopidfile"},
                          {{"PROGKEYS_SANDBOX", QFile::encodeName(directory.path())}},
                          QFile::encodeName(directory.log(name()))};
    m_process = startup.bring(name(), program, [&] { return probe.connect(m_address); });
}

QString MessageBus::name()
{
    return QStringLiteral("dbus-daemon");
}

} // namespace sandbox
