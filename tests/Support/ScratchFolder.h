// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

/// A temporary folder and the path of a preferences file in it.
class ScratchFolder
{
public:
    [[nodiscard]] std::filesystem::path path(const std::string &name) const
    {
        return std::filesystem::path(m_folder.path().toStdString()) / name;
    }

    [[nodiscard]] std::filesystem::path file() const { return path("preferences.json"); }

    /// Overwrites the file in place, as most programs do.
    void write(const QByteArray &bytes) const { writeTo(file(), bytes); }

    /// Writes another file and renames it over the old one, as careful editors do.
    void replace(const QByteArray &bytes) const
    {
        writeTo(path("edited"), bytes);
        std::filesystem::rename(path("edited"), file());
    }

    [[nodiscard]] QByteArray bytes() const { return bytesOf(file()); }

    /// The names of all files in the folder, sorted.
    [[nodiscard]] QStringList names() const
    {
        return QDir(m_folder.path())
            .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }

    /// The names of the damaged files that were set aside, sorted.
    [[nodiscard]] QStringList asideNames() const
    {
        return QDir(m_folder.path())
            .entryList({QStringLiteral("preferences.damaged-*.json")}, QDir::Files, QDir::Name);
    }

    [[nodiscard]] QByteArray aside(const QString &name) const { return bytesOf(path(name.toStdString())); }

    static void writeTo(const std::filesystem::path &path, const QByteArray &bytes)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write a file of the test");
    }

    [[nodiscard]] static QByteArray bytesOf(const std::filesystem::path &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    [[nodiscard]] static struct stat status(const std::filesystem::path &path)
    {
        struct stat status = {};
        stat(path.c_str(), &status);
        return status;
    }

private:
    QTemporaryDir m_folder;
};

/// Runs `work`, which returns an exit status, in a child process and returns that status, or -1 when it was
/// killed.
template <typename Work>
int runInChild(Work work)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(work());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
