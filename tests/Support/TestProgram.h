// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTest>

/// A test program contains the tests of one folder. `PROGRAM CLASS [ARGUMENT...]` runs one class with
/// arguments of QTest. Without a known class it lists its classes, one per line, and returns 2.
namespace TestProgram {

/// Runs a class; `argv[0]` is the program, and what follows are the arguments after the name of the class.
using Run = int (*)(int argc, char **argv);

/// Registers a class by name; for static objects.
struct Registration
{
    Registration(const char *name, Run run);
};

/// The `Application` of a test class that needs none.
struct NoApplication
{
    NoApplication(int & /*argc*/, char ** /*argv*/) {}
};

template <typename Test, typename Application>
int run(int argc, char **argv)
{
    [[maybe_unused]] const Application application(argc, argv);
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace TestProgram

/// Adds the class `Test` to the program; it runs with an object of the class `Application`.
#define ORVANE_TEST(Test, Application)                                                                       \
    static const TestProgram::Registration registrationOf##Test(#Test, TestProgram::run<Test, Application>);

/// Adds the class `Test` to the program; the function `main` runs it, as the main function of a program
/// would.
#define ORVANE_TEST_WITH_MAIN(Test, main)                                                                    \
    static const TestProgram::Registration registrationOf##Test(#Test, main);
