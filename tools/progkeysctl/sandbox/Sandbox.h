#pragma once

#include "sandbox/Executables.h"
#include "sandbox/MessageBus.h"
#include "sandbox/Module.h"

#include <memory>

namespace sandbox {

/// A phone of one's own: a bus, the SettingsManager and the service, in a directory. Everything
/// ends with it.
class Sandbox
{
public:
    /// Returns once everything is up; `limitMs` holds for each of the three. Throws as Startup
    /// does.
    Sandbox(const Executables &executables, const Directory &directory, const Signals &arrivals,
            int limitMs);
    ~Sandbox();
    Sandbox(const Sandbox &) = delete;
    Sandbox &operator=(const Sandbox &) = delete;

    const QByteArray &busAddress() const { return m_bus->address(); }

    /// What a program needs to find the phone, besides `path` in front of its PATH.
    QMap<QByteArray, QByteArray> environment(const QString &path) const;

    /// Runs the command until it ends; if a signal asks for the end before, passes `endingSignal`
    /// to it. Its exit status, or 128 and the number of the signal that killed it. Throws
    /// CannotRun.
    int run(const Program &command, int endingSignal);

private:
    Program module(const QString &file, const QStringList &arguments) const;
    void supervise();
    void followJobControl(pid_t command);

    const Directory &m_directory;
    const Signals &m_signals;
    Children m_children;
    std::unique_ptr<MessageBus> m_bus;
    std::unique_ptr<Module> m_settingsManager;
    std::unique_ptr<Module> m_service;
    bool m_isBusLost = false;
};

} // namespace sandbox
