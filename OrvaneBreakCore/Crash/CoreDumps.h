// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDate.h"

#include <QList>
#include <QString>

#include <filesystem>
#include <stop_token>
#include <string>

/// What systemd's journal tells of a crash of this program.
struct CoreDump
{
    FileDate date;
    int signal = 0;      ///< 0 when the entry does not tell.
    QString signalName;  ///< For example "SIGSEGV".
    QString description; ///< What was written into the journal, with the call stack when there is one.
};

/// Where to look for core dumps, and for which.
struct CoreDumpQuery
{
    std::filesystem::path journal;    ///< A folder of journal files; empty for those of this machine.
    std::filesystem::path executable; ///< The program that crashed.
    uid_t user = 0;                   ///< Who ran it.
    FileDate after;                   ///< Older entries do not count.
};

/// The newest core dumps, 20 at most, newest first; none where systemd's journal cannot be read. Takes as
/// long as the disk needs, so it is called on a thread of its own, where `stop` ends it early. Neither the
/// environment nor the command line of an entry is read.
[[nodiscard]] QList<CoreDump> readCoreDumps(const CoreDumpQuery &query, const std::stop_token &stop);

/// The report that is kept of `dump`: its signal, program, time and stack, without the name of the user
/// `login` and with `home` written "~".
[[nodiscard]] QString coreDumpReport(const CoreDump &dump, const std::filesystem::path &executable,
                                     const std::string &home, const std::string &login);

/// Writes `text` into "OrvaneBreak-<date of the crash>.crash" in `folder`, which is made when it is missing,
/// and dates the file `written`. A crash that has such a file is left alone; failures are silent. Returns
/// whether a file was written.
bool keepCoreDumpReport(const std::filesystem::path &folder, const CoreDump &dump, const QString &text,
                        const FileDate &written);
