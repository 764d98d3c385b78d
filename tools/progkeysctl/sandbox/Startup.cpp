#include "sandbox/Startup.h"

#include "output/TextWidth.h"

#include <QDeadlineTimer>
#include <QFile>

#include <algorithm>
#include <cstdio>

namespace sandbox {
namespace {

constexpr int TickMs = 5;
constexpr int LinesShown = 10;

// The directory may be gone by the time the failure is told.
void showEndOf(const QString &name, const QString &path)
{
    QFile log(path);
    if (!log.open(QIODevice::ReadOnly))
        return;
    const QStringList lines =
        QString::fromUtf8(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines.mid(std::max(0, int(lines.size()) - LinesShown))) {
        const QString shown = QStringLiteral("%1: %2\n").arg(name, output::printable(line));
        (void)std::fputs(shown.toUtf8().constData(), stderr);
    }
}

} // namespace

Startup::Startup(Children &children, const Signals &arrivals, const Directory &directory,
                 int limitMs)
    : m_children(children), m_signals(arrivals), m_directory(directory), m_limitMs(limitMs)
{
}

pid_t Startup::bring(const QString &name, const Program &program,
                     const std::function<bool()> &isReady)
try {
    const pid_t pid = m_children.start(program);
    const QDeadlineTimer deadline(m_limitMs);
    while (!isReady()) {
        if (deadline.hasExpired())
            throw failure(ExitStatus::TimeRanOut, name,
                          QStringLiteral("was not ready within %1 s").arg(m_limitMs / 1000.0));
        look(name, pid);
    }
    return pid;
} catch (const CannotRun &error) {
    throw Failure{ExitStatus::Failed, error.message(), QString()};
}

void Startup::look(const QString &name, pid_t pid) const
{
    const auto arrived = m_signals.next(TickMs);
    if (arrived && (arrived->asksForEnd() || arrived->number == SIGINT))
        throw Interrupted{arrived->number};
    m_children.reap();
    if (const auto end = m_children.end(pid))
        throw failure(ExitStatus::Failed, name,
                      QStringLiteral("ended with status %1 before it was ready").arg(end->status));
}

Failure Startup::failure(ExitStatus status, const QString &name, const QString &reason) const
{
    showEndOf(name, m_directory.log(name));
    const QString advice =
        m_directory.keepsLogs()
            ? QStringLiteral("All of its log is %1.")
                  .arg(m_directory.whereIs(QStringLiteral("logs/%1.log").arg(name)))
            : QStringLiteral("See all of its log with --logs DIR.");
    return {status, name + QLatin1Char(' ') + reason, advice};
}

} // namespace sandbox
