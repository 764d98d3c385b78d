#include "Watchdog.h"

#include "ServiceManager.h"
#include "zelcore/ZELLogger.h"

#include <systemd/sd-daemon.h>

#include <algorithm>
#include <limits>

namespace zel {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

// Zero if there is no watchdog for this process.
microseconds intervalFromEnvironment()
{
    uint64_t interval = 0;
    const int result = sd_watchdog_enabled(0, &interval);
    if (result < 0)
        logger().warning(
            QStringLiteral("The watchdog's interval is invalid: %1").arg(qt_error_string(-result)));
    return microseconds(result > 0 ? static_cast<int64_t>(interval) : 0);
}

// Half of the interval, limited to the range of a timer.
milliseconds halfOf(microseconds interval)
{
    const auto half = std::chrono::duration_cast<milliseconds>(interval / 2);
    return std::clamp(half, milliseconds(1), milliseconds(std::numeric_limits<int>::max()));
}

} // namespace

Watchdog::Watchdog() : m_interval(intervalFromEnvironment())
{
    if (!isAwaited())
        return;
    connect(&m_timer, &QTimer::timeout, this, &Watchdog::feedNow);
    m_timer.start(halfOf(m_interval));
}

void Watchdog::feed()
{
    if (isAwaited() && Clock::now() - m_lastFed >= m_interval / 4)
        feedNow();
}

void Watchdog::feedNow()
{
    m_lastFed = Clock::now();
    tellAlive();
}

} // namespace zel
