// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDate.h"

#include <QList>
#include <QString>

#include <filesystem>
#include <stop_token>
#include <string>

/// A crash of this program in systemd's journal.
struct CoreDump
{
    FileDate date;
    int signal = 0;      ///< 0 when unknown.
    QString signalName;  ///< For example "SIGSEGV".
    QString description; ///< The message in the journal, with the call stack if there is one.
};

/// Which core dumps to search for, and where.
struct CoreDumpQuery
{
    std::filesystem::path journal;    ///< A folder of journal files; empty for this machine's journal.
    std::filesystem::path executable; ///< The program that crashed.
    uid_t user = 0;                   ///< Who ran it.
    FileDate after;                   ///< Entries up to this date are ignored.
};

/// The newest core dumps, at most 20, newest first; empty when systemd's journal cannot be read. Waits for
/// the disk, so it is called on its own thread; `stop` ends it early. Never reads the environment or the
/// command line of an entry.
[[nodiscard]] QList<CoreDump> readCoreDumps(const CoreDumpQuery &query, const std::stop_token &stop);

/// The report about `dump`: its signal, program, time and stack, with `home` and the user name `login`
/// replaced by "~".
[[nodiscard]] QString coreDumpReport(const CoreDump &dump, const std::filesystem::path &executable,
                                     const std::string &home, const std::string &login);

/// Writes `text` to "OrvaneBreak-<date of the crash>.crash" in `folder`, which it creates if necessary, and
/// sets the file's date to `written`. Returns false when the file exists or cannot be written.
bool writeCoreDumpReport(const std::filesystem::path &folder, const CoreDump &dump, const QString &text,
                         const FileDate &written);
