// SPDX-License-Identifier: GPL-3.0-or-later
#include "UserFolders.h"

#include "Support/TestProgram.h"

#include <QTest>

#include <pwd.h>
#include <unistd.h>

#include <string>

class UserFoldersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutHomeTheUserDatabaseTells()
    {
        const std::string home = getpwuid(getuid())->pw_dir;
        qunsetenv("XDG_CONFIG_HOME");
        for (const char *none : {"", static_cast<const char *>(nullptr)}) {
            none ? setenv("HOME", none, 1) : unsetenv("HOME");
            UserFolders::provideHome();
            QCOMPARE(UserFolders::configuration().string(), home + "/.config");
        }
        qputenv("HOME", "/somewhere");
        UserFolders::provideHome();
        QCOMPARE(UserFolders::configuration().string(), std::string("/somewhere/.config"));
    }
};

ORVANE_TEST(UserFoldersTest, TestProgram::NoApplication)
#include "UserFoldersTest.moc"
