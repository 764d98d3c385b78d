#include "cli/Session.h"

#include <algorithm>

namespace cli {
namespace {

// What the bus library waits if nobody says otherwise.
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

int Session::timeoutMs(double defaultSeconds) const
{
    // A bus call takes 0 for its own default, so the shortest wait is 1 ms.
    return std::max(1, static_cast<int>(m_options.timeout.value_or(defaultSeconds) * 1000));
}

} // namespace cli
