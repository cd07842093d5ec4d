// SPDX-License-Identifier: GPL-3.0-or-later
#include "CoreDumps.h"

#include "ExceptionText.h"
#include "FileCalls.h"
#include "FileDescriptor.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <systemd/sd-journal.h>

#include <array>
#include <memory>
#include <string_view>
#include <system_error>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maxDumps = 20;
constexpr std::size_t maxFieldSize = std::size_t{64} * 1024;
constexpr std::int64_t microsecondsPerSecond = 1'000'000;

/// Matches the entries of systemd's core dump service.
constexpr const char *coreDumpMatch = "MESSAGE_ID=fc2e22bc6ee647b6b90729ab34a250b1";

struct JournalDeleter
{
    void operator()(sd_journal *journal) const { sd_journal_close(journal); }
};

using Journal = std::unique_ptr<sd_journal, JournalDeleter>;

Journal openJournal(const std::filesystem::path &folder)
{
    sd_journal *journal = nullptr;
    const int status = folder.empty() ? sd_journal_open(&journal, SD_JOURNAL_LOCAL_ONLY)
                                      : sd_journal_open_directory(&journal, folder.c_str(), 0);
    return Journal(status < 0 ? nullptr : journal);
}

bool restrictTo(sd_journal *journal, const CoreDumpQuery &query)
{
    const std::array<std::string, 3> conditions = {coreDumpMatch, "COREDUMP_EXE=" + query.executable.string(),
                                                   "COREDUMP_UID=" + std::to_string(query.user)};
    for (const std::string &condition : conditions) {
        if (sd_journal_add_match(journal, condition.data(), condition.size()) < 0)
            return false;
    }
    return true;
}

QString field(sd_journal *journal, const char *name)
{
    const void *data = nullptr;
    std::size_t length = 0;
    if (sd_journal_get_data(journal, name, &data, &length) < 0)
        return {};
    const std::string_view text(static_cast<const char *>(data), std::min(length, maxFieldSize));
    const std::string_view value = text.substr(std::min(text.size(), text.find('=') + 1));
    return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size()));
}

/// The date of the crash, which systemd stores in microseconds.
FileDate dateOf(sd_journal *journal)
{
    std::uint64_t microseconds = field(journal, "COREDUMP_TIMESTAMP").toULongLong();
    if (microseconds == 0)
        sd_journal_get_realtime_usec(journal, &microseconds);
    const timespec time = {static_cast<time_t>(microseconds / microsecondsPerSecond),
                           static_cast<long>(microseconds % microsecondsPerSecond) * 1000};
    return FileDate::of(time);
}

} // namespace

QList<CoreDump> readCoreDumps(const CoreDumpQuery &query, const std::stop_token &stop)
{
    QList<CoreDump> dumps;
    const Journal journal = openJournal(query.journal);
    if (!journal || !restrictTo(journal.get(), query))
        return dumps;
    sd_journal_set_data_threshold(journal.get(), maxFieldSize);
    sd_journal_seek_tail(journal.get());
    while (!stop.stop_requested() && dumps.size() < maxDumps && sd_journal_previous(journal.get()) > 0) {
        const FileDate date = dateOf(journal.get());
        if (!(query.after < date))
            break;
        dumps.append({date, field(journal.get(), "COREDUMP_SIGNAL").toInt(),
                      field(journal.get(), "COREDUMP_SIGNAL_NAME"), field(journal.get(), "MESSAGE")});
    }
    return dumps;
}

QString coreDumpReport(const CoreDump &dump, const std::filesystem::path &executable, const std::string &home,
                       const std::string &login)
{
    const QString text =
        u"Termination Signal: %1 %2\nExecutable: %3\nDate: %4\n\n%5\n"_s.arg(dump.signal)
            .arg(dump.signalName, QFile::decodeName(executable.c_str()), dump.date.text(), dump.description);
    return QString::fromStdString(withoutUser(text.toStdString(), home, login));
}

bool writeCoreDumpReport(const std::filesystem::path &folder, const CoreDump &dump, const QString &text,
                         const FileDate &written)
{
    std::error_code error;
    if (std::filesystem::create_directories(folder, error))
        chmod(folder.c_str(), S_IRWXU);
    const std::filesystem::path path = folder / ("OrvaneBreak-" + dump.date.text().toStdString() + ".crash");
    const FileDescriptor descriptor(
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!descriptor.isOpen())
        return false;
    if (!writeBytes(descriptor.get(), text.toUtf8())) {
        std::filesystem::remove(path, error);
        return false;
    }
    const timespec times[2] = {{written.seconds, written.nanoseconds},
                               {written.seconds, written.nanoseconds}};
    futimens(descriptor.get(), times);
    return true;
}
