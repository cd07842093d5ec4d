// SPDX-License-Identifier: GPL-3.0-or-later
#include "UserFolders.h"

#include <QDir>
#include <QFile>

#include <pwd.h>
#include <unistd.h>

#include <array>

namespace {

std::filesystem::path folder(const char *variable, const char *belowHome)
{
    std::filesystem::path configured = qgetenv(variable).toStdString();
    if (configured.is_absolute())
        return configured;
    return std::filesystem::path(QFile::encodeName(QDir::homePath()).toStdString()) / belowHome;
}

} // namespace

void UserFolders::provideHome()
{
    if (!qEnvironmentVariableIsEmpty("HOME"))
        return;
    std::array<char, 4096> texts{};
    passwd entry{};
    passwd *user = nullptr;
    if (getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &user) == 0 && user)
        qputenv("HOME", user->pw_dir);
}

std::filesystem::path UserFolders::configuration()
{
    return folder("XDG_CONFIG_HOME", ".config");
}

std::filesystem::path UserFolders::cache()
{
    return folder("XDG_CACHE_HOME", ".cache");
}

std::filesystem::path UserFolders::data()
{
    return folder("XDG_DATA_HOME", ".local/share");
}

std::filesystem::path UserFolders::state()
{
    return folder("XDG_STATE_HOME", ".local/state");
}
