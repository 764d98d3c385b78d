#pragma once

#include "support/TypeNamed.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QtTest>

namespace unit {

/// What a test runs in: a data root of its own below a temporary directory, no variable that would
/// steer the log or name a service manager, and a private bus. Without such a bus the process ends
/// with status 1, so that no test ever talks to the developer's own.
class Surroundings
{
public:
    Surroundings();

    /// Not there yet; with a slash at its end.
    QString dataRoot() const;
    QString directory() const;

private:
    QTemporaryDir m_directory;
};

/// Runs the test under a plain application object, which leaves the lifecycle to the test.
template <typename Test>
int run(int argc, char **argv)
{
    const Surroundings surroundings;
    QCoreApplication application(argc, argv);
    application.setProperty("dataRoot", surroundings.dataRoot());
    Test test;
    return QTest::qExec(&test, argc, argv);
}

/// Runs a test that makes its application objects itself.
template <typename Test>
int runWithoutApplication(int argc, char **argv)
{
    const Surroundings surroundings;
    Test test;
    return QTest::qExec(&test, argc, argv);
}

/// From now on nothing in this process can reach a bus. To be called before anything tries.
void loseTheBus();

} // namespace unit

#define PROGKEYS_TEST_MAIN(Test)                                                                   \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        return unit::run<Test>(argc, argv);                                                        \
    }

#define PROGKEYS_TEST_MAIN_WITHOUT_APPLICATION(Test)                                               \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        return unit::runWithoutApplication<Test>(argc, argv);                                      \
    }
