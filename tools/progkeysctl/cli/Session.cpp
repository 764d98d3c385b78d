#include "cli/Session.h"

#include <algorithm>
#include <cstdio>

namespace cli {
namespace {

// The default of the bus library.
constexpr double CallSeconds = 25;

} // namespace

Session::Session(Options options, const CommandLine &line)
    : m_options(std::move(options)), m_line(line), m_out(m_options.manner)
{
}

client::Bus &Session::bus()
{
    if (!m_bus)
        m_bus.emplace(m_options.bus, timeoutMs(CallSeconds));
    return *m_bus;
}

client::ProgrammableKeys &Session::service()
{
    if (!m_service)
        m_service.emplace(bus());
    return *m_service;
}

void Session::note(const QString &line)
{
    m_out.flush();
    std::fputs((line + QLatin1Char('\n')).toUtf8().constData(), stderr);
    std::fflush(stderr);
}

int Session::timeoutMs(double defaultSeconds) const
{
    // 0 would mean the default of the bus library.
    return std::max(1, static_cast<int>(m_options.timeout.value_or(defaultSeconds) * 1000));
}

} // namespace cli
