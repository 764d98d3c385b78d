#pragma once

#include "sandbox/BusProbe.h"
#include "sandbox/Startup.h"

#include <QDeadlineTimer>
#include <QList>

namespace sandbox {

/// A module of the phone, started again whenever it ends, as its supervisor there does.
class Module
{
public:
    /// Starts the program, and returns once the module of that name is on the bus. Throws as
    /// Startup does.
    Module(const QString &module, const Program &program, Startup &startup, const BusProbe &probe,
           Children &children);

    pid_t process() const { return m_process; }

    /// Starts it again if it has ended; says so on stderr if that has happened too often of late,
    /// and leaves it.
    void supervise();

    /// Ends it, and says so on stderr if that did not go well.
    void finish();

private:
    bool endsTooOften();
    void startAgain();

    QString m_name;
    Program m_program;
    Children &m_children;
    pid_t m_process;
    QList<QDeadlineTimer> m_ends; ///< until when each counts
    bool m_isDown = false;
};

} // namespace sandbox
