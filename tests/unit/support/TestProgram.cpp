#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace unit {
namespace {

struct TestClass
{
    const char *name;
    Registration::Factory factory;
};

std::vector<TestClass> &testClasses()
{
    static std::vector<TestClass> theClasses;
    return theClasses;
}

bool isTestClass(const QString &name)
{
    return std::any_of(
        testClasses().cbegin(), testClasses().cend(),
        [&name](const TestClass &testClass) { return name == QLatin1String(testClass.name); });
}

/// Sets a private data directory, no bus, and no variables of a service manager.
void setUpEnvironment(const QTemporaryDir &directory)
{
    if (!directory.isValid()) {
        std::fputs("Cannot create a temporary directory for the test.\n", stderr);
        std::exit(EXIT_FAILURE);
    }
    qputenv("ZEL_DATA_ROOT", directory.filePath(QStringLiteral("data/")).toUtf8());
    qputenv("ZEL_LOG_LEVEL", "0"); // LogCapture sets a higher level
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    for (const char *variable :
         {"JOURNAL_STREAM", "NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID"})
        qunsetenv(variable);
}

int runTests(QStringList arguments)
{
    const QString only = isTestClass(arguments.value(1)) ? arguments.takeAt(1) : QString();
    int worst = EXIT_SUCCESS;
    for (const TestClass &testClass : testClasses()) {
        if (!only.isEmpty() && only != QLatin1String(testClass.name))
            continue;
        const std::unique_ptr<QObject> test = testClass.factory();
        worst = std::max(worst, QTest::qExec(test.get(), arguments));
    }
    return worst;
}

} // namespace

Registration::Registration(const char *className, Factory factory)
{
    testClasses().push_back({className, factory});
}

} // namespace unit

int main(int argc, char **argv)
{
    const QTemporaryDir directory;
    unit::setUpEnvironment(directory);
    QCoreApplication application(argc, argv);
    return unit::runTests(QCoreApplication::arguments());
}
