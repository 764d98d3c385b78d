#include "sandbox/Module.h"

#include "output/Output.h"

#include <zelcore/ZELBusNames.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace sandbox {
namespace {

constexpr int MaxEnds = 3;
constexpr int EndCountsForMs = 10'000;
constexpr int FinishMs = 5000;

void note(const Program &program, const End &end, const char *consequence)
{
    QFile log(QFile::decodeName(program.log));
    if (log.open(QIODevice::Append))
        log.write("-- ended with status " + QByteArray::number(end.status) + ", " + consequence +
                  "\n");
}

} // namespace

Module::Module(const QString &module, const Program &program, Startup &startup,
               const BusProbe &probe, Children &children)
    : m_name(QFileInfo(QFile::decodeName(program.file)).fileName()), m_program(program),
      m_children(children),
      m_process(
          startup.bring(m_name, program, [&] { return probe.hasOwner(zel::serviceName(module)); }))
{
}

void Module::supervise()
{
    const auto end = m_children.end(m_process);
    if (m_isDown || !end)
        return;
    m_isDown = endsTooOften();
    note(m_program, *end, m_isDown ? "stays down" : "started again");
    if (m_isDown)
        output::warn(QStringLiteral("%1 has ended %2 times within %3 s, the last time with status "
                                    "%4, and stays down; its log is %5")
                         .arg(m_name)
                         .arg(MaxEnds)
                         .arg(EndCountsForMs / 1000)
                         .arg(end->status)
                         .arg(QFile::decodeName(m_program.log)));
    else
        startAgain();
}

bool Module::endsTooOften()
{
    const auto counts = [](const QDeadlineTimer &end) { return !end.hasExpired(); };
    m_ends.erase(m_ends.begin(), std::find_if(m_ends.begin(), m_ends.end(), counts));
    m_ends.append(QDeadlineTimer(EndCountsForMs));
    return m_ends.size() >= MaxEnds;
}

void Module::startAgain()
{
    try {
        m_process = m_children.start(m_program);
    } catch (const CannotRun &error) {
        m_isDown = true;
        output::warn(error.message() + QStringLiteral(", and it stays down"));
    }
}

void Module::finish()
{
    if (m_isDown)
        return;
    const auto end = m_children.finish(m_process, SIGTERM, FinishMs);
    if (!end)
        output::warn(QStringLiteral("%1 did not end when asked, and was killed").arg(m_name));
    // One that has just been started again takes no notice of the signal yet, and dies of it.
    else if (end->status != 0 && end->status != 128 + SIGTERM)
        output::warn(QStringLiteral("%1 ended with status %2").arg(m_name).arg(end->status));
}

} // namespace sandbox
