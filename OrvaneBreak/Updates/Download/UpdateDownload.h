// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Downloads.h"
#include "PartialFile.h"
#include "RunLoop.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

/// Fetches the archive of an update, through broken connections and over several starts of the program. What
/// has arrived is kept in a folder of the user's alone until all of it is there. Nothing is verified here.
/// User-interface thread.
class UpdateDownload final : public QObject
{
    Q_OBJECT

public:
    struct Wanted
    {
        QUrl address;
        qint64 length = 0; ///< Of the archive in bytes; what has another length is not it.
        QString version;   ///< For the name of the file.
    };

    /// How many bytes there are by now; fewer than before when the server made it start over.
    using Progress = std::function<void(qint64 received)>;
    /// All bytes, or nothing when they cannot be had.
    using Completion = std::function<void(std::optional<QByteArray> archive)>;

    /// The references outlive the download. `folder` is for downloads alone; it is made when it is needed,
    /// with the mode 0700.
    UpdateDownload(Downloads &downloads, RunLoop &runLoop, std::filesystem::path folder);

    /// Fetches `wanted`, going on with what an earlier start left of the same address, version and length;
    /// what is left of other ones is removed. A broken connection is taken up again after a pause: after 1 s,
    /// or up to 8 s when nothing new came. Calls `onFinished` once, from the event loop; with nothing after 5
    /// attempts in a row that brought nothing new, after 2 hours, for an address that the program does not
    /// talk to, when the server refuses, sends more than the length, or the disk does not take it. Cancels
    /// the download before.
    void start(Wanted wanted, Progress onProgress, Completion onFinished);

    /// Ends the download without a call of its completion; what has arrived stays for the next start. Does
    /// nothing when there is none.
    void cancel();

private:
    void ask();
    void begin(qint64 offset);
    void receive(const QByteArray &bytes);
    void end(Downloads::End end);
    void tryAgain();
    void tell();
    void fail();
    void failWithoutFile();
    void finish(std::optional<QByteArray> archive);

    Downloads &m_downloads;
    RunLoop &m_runLoop;
    std::filesystem::path m_folder;
    Wanted m_wanted;
    Progress m_onProgress;
    Completion m_onFinished;
    std::optional<PartialFile> m_file;
    std::unique_ptr<Downloads::Exchange> m_exchange;
    Timer m_pause;
    Timer m_limit;
    qint64 m_received = 0;
    qint64 m_most = 0; ///< The most that was there before this attempt; reaching less again is no progress.
    int m_vainAttempts = 0;
    int m_start = 0; ///< Tells a late completion from one of this start.
};
