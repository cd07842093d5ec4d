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

/// Downloads the archive of an update, and resumes after broken connections and restarts of the program. The
/// received part is kept in a folder that only the user can access. Does not verify the archive.
/// User-interface thread.
class UpdateDownload final : public QObject
{
    Q_OBJECT

public:
    struct Request
    {
        QUrl address;
        qint64 length = 0; ///< Exact length of the archive in bytes.
        QString version;   ///< Part of the file name.
    };

    /// Gets the bytes received so far; fewer than before when the server started over.
    using Progress = std::function<void(qint64 received)>;
    /// Gets the whole archive; absent when the download failed.
    using Completion = std::function<void(std::optional<QByteArray> archive)>;

    /// The references outlive this object. `folder` is used for downloads only, and created on demand with
    /// the mode 0700.
    UpdateDownload(Downloads &downloads, RunLoop &runLoop, std::filesystem::path folder);

    /// Cancels the current download and starts this one. Resumes a partial file of the same address, version
    /// and length, and removes all others. Retries a broken connection after 1 s, or after up to 8 s when the
    /// last attempts brought no new bytes. Calls `onFinished` once, from the event loop. Fails after 5 such
    /// attempts in a row, after 2 hours, for an address that the program may not talk to, and when the server
    /// refuses, sends more than the length, the disk cannot be written, or another process downloads the
    /// same. A complete archive stays on the disk until discard(), and is not downloaded again.
    void start(Request request, Progress onProgress, Completion onFinished);

    /// Stops the download without calling its completion, and keeps the received part. Does nothing when no
    /// download is running.
    void cancel();

    /// Removes the archive of the last download, which was installed or refused.
    void discard();

private:
    void requestRest();
    void begin(qint64 offset);
    void receive(const QByteArray &bytes);
    void end(Downloads::End end);
    void retry();
    void reportProgress();
    void fail();
    void failWithoutFile();
    void finish(std::optional<QByteArray> archive);

    Downloads &m_downloads;
    RunLoop &m_runLoop;
    std::filesystem::path m_folder;
    Request m_request;
    Progress m_onProgress;
    Completion m_onFinished;
    std::optional<PartialFile> m_file;
    std::unique_ptr<Downloads::Exchange> m_exchange;
    Timer m_retry;
    Timer m_timeout;
    qint64 m_received = 0;
    qint64 m_highestReceived = 0; ///< Before this attempt; receiving less than this is no progress.
    int m_failedAttempts = 0;
    int m_generation = 0; ///< Number of the download; a completion of an earlier one is dropped.
};
