// SPDX-License-Identifier: GPL-3.0-or-later
#include "PreferencesFile.h"

#include "FileCalls.h"
#include "FileWatch.h"
#include "MessageFilter.h"
#include "PrivateFolder.h"

#include <QDateTime>
#include <QRandomGenerator>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using State = PreferencesContent::State;

namespace {

constexpr auto lockTimeout = 500ms;
constexpr auto lockRetryInterval = 500us;
constexpr int maxAsideNames = 9'999;
constexpr std::string_view temporarySuffix = ".tmp";
constexpr std::size_t temporaryDigits = 16;

std::optional<QByteArray> readBytes(int file)
{
    // Piece by piece, because one read would need a buffer for the largest file even for the smallest.
    QByteArray bytes;
    std::array<char, 16'384> piece = {};
    while (bytes.size() <= maxPreferencesSize) {
        const ssize_t length = uninterrupted([&] { return read(file, piece.data(), piece.size()); });
        if (length < 0)
            return std::nullopt;
        if (length == 0)
            break;
        bytes.append(piece.data(), length);
    }
    return bytes;
}

/// The result of a system call that has just failed.
PreferencesContent contentAfterError()
{
    return {errno == ENOENT || errno == ENOTDIR ? State::NoFile : State::Unreadable, {}};
}

PreferencesContent readAt(int folder, const char *name, const PreferencesMembers &known)
{
    // Opening a device can have side effects.
    struct stat status = {};
    if (fstatat(folder, name, &status, 0) != 0)
        return contentAfterError();
    if (!S_ISREG(status.st_mode))
        return {};
    const FileDescriptor file(
        uninterrupted([&] { return openat(folder, name, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    if (!file.isOpen())
        return contentAfterError();
    if (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    const std::optional<QByteArray> bytes = readBytes(file.get());
    return bytes ? parsePreferences(*bytes, known) : PreferencesContent{};
}

bool lockFolder(int folder)
{
    const auto deadline = std::chrono::steady_clock::now() + lockTimeout;
    while (flock(folder, LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(lockRetryInterval);
    }
    return true;
}

std::string temporaryPrefix(const std::string &name)
{
    return "." + name + ".";
}

std::string newTemporaryName(const std::string &name)
{
    const QByteArray digits = QByteArray::number(QRandomGenerator::system()->generate64(), 16)
                                  .rightJustified(static_cast<qsizetype>(temporaryDigits), '0');
    return temporaryPrefix(name).append(digits.constData()).append(temporarySuffix);
}

bool isTemporaryName(std::string_view candidate, const std::string &name)
{
    const std::string prefix = temporaryPrefix(name);
    if (candidate.size() != prefix.size() + temporaryDigits + temporarySuffix.size() ||
        !candidate.starts_with(prefix) || !candidate.ends_with(temporarySuffix))
        return false;
    const std::string_view digits = candidate.substr(prefix.size(), temporaryDigits);
    return digits.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

/// Calls `take` with one name after another until it succeeds or fails with an error other than EEXIST.
template <typename Take>
bool takeAsideName(const std::filesystem::path &file, Take take)
{
    const std::filesystem::path name = file.filename();
    const QString date = QDateTime::currentDateTimeUtc().toString(u"yyyyMMdd'T'HHmmss'Z'"_s);
    const std::string base = name.stem().string() + ".damaged-" + date.toStdString();
    for (int number = 1; number <= maxAsideNames; ++number) {
        const std::string suffix = number > 1 ? "-" + std::to_string(number) : std::string();
        const std::string aside = base + suffix + name.extension().string();
        if (take(aside.c_str()) == 0) {
            const std::string path = (file.parent_path() / aside).string();
            qCInfo(orvaneLog).noquote()
                << u"OrvaneBreak: préférences: fichier illisible mis de côté sous"_s << path.c_str();
            return true;
        }
        if (errno != EEXIST)
            return false;
    }
    return false;
}

} // namespace

PreferencesContent parsePreferences(const QByteArray &json, const PreferencesMembers &known)
{
    if (json.isEmpty())
        return {State::Empty, {}};
    if (json == known.json())
        return {State::Values, known};
    std::optional<PreferencesMembers> members;
    if (json.size() <= maxPreferencesSize)
        members = PreferencesMembers::parse(json);
    if (!members)
        return {State::Damaged, {}};
    return {State::Values, *std::move(members)};
}

PreferencesContent readPreferences(const std::filesystem::path &file)
{
    return readAt(AT_FDCWD, file.c_str(), {});
}

PreferencesFile::PreferencesFile(const std::filesystem::path &file)
{
    const std::filesystem::path target = FileWatch::linkChain(file).back();
    m_folderPath = target.parent_path();
    m_name = target.filename().string();
    m_folder = openFolder(m_folderPath);
    m_isLocked = m_folder.isOpen() && lockFolder(m_folder.get());
}

PreferencesContent PreferencesFile::read(const PreferencesMembers &known) const
{
    return m_folder.isOpen() ? readAt(m_folder.get(), m_name.c_str(), known) : PreferencesContent{};
}

bool PreferencesFile::moveAside()
{
    return takeAsideName(m_folderPath / m_name, [this](const char *aside) {
        return renameat2(m_folder.get(), m_name.c_str(), m_folder.get(), aside, RENAME_NOREPLACE);
    });
}

bool PreferencesFile::linkAside()
{
    return takeAsideName(m_folderPath / m_name, [this](const char *aside) {
        return linkat(m_folder.get(), m_name.c_str(), m_folder.get(), aside, 0);
    });
}

bool PreferencesFile::replace(const QByteArray &json, Old old)
{
    if (!m_folder.isOpen())
        return false;
    if (m_isLocked)
        removeAbandoned();
    m_temporaryName = newTemporaryName(m_name);
    // The lock distinguishes the file from one whose writer was killed. It has its own descriptor, because
    // the one for writing is closed before the rename: a later close would look like another program's
    // change.
    const FileDescriptor temporary(openat(m_folder.get(), m_temporaryName.c_str(),
                                          O_RDONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                          S_IRUSR | S_IWUSR));
    if (!temporary.isOpen())
        return false;
    flock(temporary.get(), LOCK_EX | LOCK_NB);
    if (fchmod(temporary.get(), S_IRUSR | S_IWUSR) == 0 && fillTemporary(json) && renameTemporary(old))
        return true;
    unlinkat(m_folder.get(), m_temporaryName.c_str(), 0);
    return false;
}

bool PreferencesFile::fillTemporary(const QByteArray &json) const
{
    const FileDescriptor file(uninterrupted([this] {
        return openat(m_folder.get(), m_temporaryName.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    }));
    return file.isOpen() && writeBytes(file.get(), json) && syncToDisk(file.get());
}

bool PreferencesFile::renameTemporary(Old old)
{
    // With a second link the path always leads to a file; some file systems have no hard links.
    if (old == Old::PutAside && !linkAside() && !moveAside())
        return false;
    if (renameat(m_folder.get(), m_temporaryName.c_str(), m_folder.get(), m_name.c_str()) != 0)
        return false;
    fsync(m_folder.get());
    return true;
}

void PreferencesFile::removeAbandoned()
{
    std::error_code error;
    for (std::filesystem::directory_iterator entry(m_folderPath, error); !error && entry != end(entry);
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (!isTemporaryName(name, m_name))
            continue;
        const FileDescriptor file(
            openat(m_folder.get(), name.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
        if (file.isOpen() && flock(file.get(), LOCK_EX | LOCK_NB) == 0)
            unlinkat(m_folder.get(), name.c_str(), 0);
    }
}
