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

} // namespace unit

/// Adds the tests of a class to the program. A program contains the classes of a folder. Its first
/// argument can be the name of a class; the other arguments are those of QtTest.
#define PROGKEYS_TEST(Test)                                                                        \
    static const unit::Registration registrationOf##Test(                                          \
        #Test, []() -> std::unique_ptr<QObject> { return std::make_unique<Test>(); });
