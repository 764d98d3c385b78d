#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

#include <sys/types.h>

namespace sandbox {

class Signals;

/// A program to be run as a child. Words are bytes, as the system takes them.
struct Program
{
    QByteArray file; ///< a path, or a name to be found on the PATH of `environment`
    QList<QByteArray> arguments;
    QMap<QByteArray, QByteArray> environment; ///< besides what this process has

    /// Where its output is appended; it then reads nothing, and has a session of its own, which
    /// keys at the terminal do not reach. Empty: it shares this process's streams and session.
    QByteArray log;
};

/// Thrown where a program cannot be started.
struct CannotRun
{
    QByteArray file;
    int error; ///< as errno

    /// In a sentence without a full stop.
    QString message() const;
};

/// Starts the program as a child that is killed when this process ends in any way, and returns once
/// it is that program. Throws CannotRun. There must be only one thread.
pid_t launch(const Program &program, const Signals &arrivals);

} // namespace sandbox
