#include <zelcore/ZELLogger.h>

/// Ends with the log level that its environment configures.
int main()
{
    return ZELLogger::getConfiguredLevel();
}
