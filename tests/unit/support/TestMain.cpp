#include "support/TestMain.h"

#include <cstdio>
#include <cstdlib>

namespace unit {

Surroundings::Surroundings()
{
    if (!m_directory.isValid() || qEnvironmentVariableIsEmpty("DBUS_SYSTEM_BUS_ADDRESS")) {
        std::fputs("This test needs a temporary directory and a bus of its own: run it by ctest, "
                   "or by run-on-private-bus.\n",
                   stderr);
        std::exit(EXIT_FAILURE);
    }
    qputenv("ZEL_DATA_ROOT", dataRoot().toUtf8());
    qputenv("ZEL_LOG_LEVEL", "0"); // a test that looks at the log raises it
    for (const char *variable :
         {"JOURNAL_STREAM", "NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID"})
        qunsetenv(variable);
}

QString Surroundings::dataRoot() const
{
    return directory() + QStringLiteral("/data/");
}

QString Surroundings::directory() const
{
    return m_directory.path();
}

void loseTheBus()
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
}

} // namespace unit
