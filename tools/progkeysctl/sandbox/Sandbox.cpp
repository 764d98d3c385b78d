#include "sandbox/Sandbox.h"

#include "output/Output.h"

#include <QFile>

#include <csignal>
#include <unistd.h>

namespace sandbox {
namespace {

constexpr int BusFinishMs = 2000;
constexpr int CommandFinishMs = 3000;

bool hasOwnGroup(pid_t pid)
{
    const pid_t group = getpgid(pid);
    return group > 0 && group != getpgrp();
}

// A shell that was killed leaves the terminal to a process group that is no more.
class ForegroundGroup
{
public:
    ForegroundGroup() : m_isOurs(tcgetpgrp(STDIN_FILENO) == getpgrp()) {}
    ~ForegroundGroup()
    {
        if (m_isOurs)
            tcsetpgrp(STDIN_FILENO, getpgrp());
    }
    ForegroundGroup(const ForegroundGroup &) = delete;
    ForegroundGroup &operator=(const ForegroundGroup &) = delete;

private:
    bool m_isOurs;
};

} // namespace

Sandbox::Sandbox(const Executables &executables, const Directory &directory,
                 const Signals &arrivals, int limitMs)
    : m_directory(directory), m_signals(arrivals), m_children(arrivals)
{
    Startup startup(m_children, arrivals, directory, limitMs);
    BusProbe probe;
    m_bus = std::make_unique<MessageBus>(executables.bus, directory, startup, probe);
    m_settingsManager = std::make_unique<Module>(
        QStringLiteral("SettingsManager"),
        module(executables.settingsManager, {directory.settings()}), startup, probe, m_children);
    m_service =
        std::make_unique<Module>(QStringLiteral("ZelProgrammableKeys"),
                                 module(executables.service, {}), startup, probe, m_children);
}

Sandbox::~Sandbox()
{
    // First whatever the command left behind, so that nobody misses the phone.
    m_children.finishAllBut({m_bus->process(), m_settingsManager->process(), m_service->process()});
    if (!m_isBusLost) {
        m_service->finish();
        m_settingsManager->finish();
        m_children.finish(m_bus->process(), SIGTERM, BusFinishMs);
    }
}

QMap<QByteArray, QByteArray> Sandbox::environment(const QString &path) const
{
    return {{"DBUS_SYSTEM_BUS_ADDRESS", busAddress()},
            {"ZEL_DATA_ROOT", QFile::encodeName(m_directory.data()) + '/'},
            {"PROGKEYS_SANDBOX", QFile::encodeName(m_directory.path())},
            {"PATH", QFile::encodeName(path) + ':' + qgetenv("PATH")}};
}

Program Sandbox::module(const QString &file, const QStringList &arguments) const
{
    Program program{QFile::encodeName(file), {}, environment(ownDirectory()), {}};
    const QString name = file.section(QLatin1Char('/'), -1);
    program.log = QFile::encodeName(m_directory.log(name));
    for (const QString &argument : arguments)
        program.arguments.append(QFile::encodeName(argument));
    return program;
}

int Sandbox::run(const Program &command, int endingSignal)
{
    const ForegroundGroup foreground;
    const pid_t pid = m_children.start(command);
    for (m_children.reap(); !m_children.end(pid); m_children.reap()) {
        supervise();
        followJobControl(pid);
        const auto arrived = m_signals.next(Signals::Forever);
        if (arrived && arrived->asksForEnd()) {
            const auto end = m_children.finish(pid, endingSignal, CommandFinishMs);
            return end ? end->status : 128 + SIGKILL;
        }
        if (arrived && arrived->number == SIGCONT && hasOwnGroup(pid))
            kill(-getpgid(pid), SIGCONT);
    }
    return m_children.end(pid)->status;
}

// A shell has a process group of its own. When that is suspended, whoever started this process must
// learn of it, to take the terminal back.
void Sandbox::followJobControl(pid_t command)
{
    if (m_children.hasStopped(command) && hasOwnGroup(command))
        kill(getppid(), SIGSTOP);
}

void Sandbox::supervise()
{
    if (m_isBusLost)
        return;
    m_isBusLost = m_children.end(m_bus->process()).has_value();
    if (m_isBusLost) {
        output::warn(QStringLiteral("the sandbox's bus has ended, and with it the phone"));
        return;
    }
    m_settingsManager->supervise();
    m_service->supervise();
}

} // namespace sandbox
