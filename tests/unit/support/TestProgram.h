#pragma once

#include <QObject>
#include <QtTest>

#include <memory>

namespace unit {

/// Adds a class of tests to the program that it is linked into. See PROGKEYS_TEST.
class Registration
{
public:
    using Factory = std::unique_ptr<QObject> (*)();

    Registration(const char *className, Factory factory);
};

/// The root of the data of this process, below a temporary directory. It ends with a slash and does
/// not exist at first.
QString dataRoot();

} // namespace unit

/// Lets the program run the tests of a class. One program holds all classes of a folder; its
/// optional first argument is the name of one class, and all others are QtTest's.
#define PROGKEYS_TEST(Test)                                                                        \
    static const unit::Registration registrationOf##Test(                                          \
        #Test, []() -> std::unique_ptr<QObject> { return std::make_unique<Test>(); });
