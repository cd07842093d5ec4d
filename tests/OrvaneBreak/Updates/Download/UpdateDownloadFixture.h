// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Support/FakeDownloads.h"
#include "Support/ManualRunLoop.h"
#include "Support/ScratchFolder.h"
#include "UpdateDownload.h"

#include <QCoreApplication>
#include <QDir>

#include <vector>

inline const QByteArray archive = "0123456789";

/// A download from a fake server into a scratch folder.
struct UpdateDownloadFixture
{
    void start()
    {
        start({QUrl(QStringLiteral("https://example.org/archive")), archive.size(), QStringLiteral("1.3")});
    }

    void start(const UpdateDownload::Request &request)
    {
        download.start(
            request, [this](qint64 received) { progress.push_back(received); },
            [this](const std::optional<QByteArray> &bytes) {
                ++completions;
                result = bytes;
            });
    }

    /// Leaves a partial file with these bytes.
    void leave(const QByteArray &bytes)
    {
        start();
        downloads.answer(bytes, Downloads::End::Broken);
        download.cancel();
    }

    [[nodiscard]] std::filesystem::path partialFile() const
    {
        const QStringList names = this->names();
        return names.isEmpty() ? folder : folder / names.constFirst().toStdString();
    }

    [[nodiscard]] QStringList names() const
    {
        return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    [[nodiscard]] int requests() const { return static_cast<int>(downloads.requests.size()); }
    [[nodiscard]] qint64 offset() const { return downloads.requests.constLast().offset; }

    /// Whether the download has completed once, from the event loop, with `expected`.
    [[nodiscard]] bool isFinishedWith(const std::optional<QByteArray> &expected) const
    {
        if (completions != 0)
            return false;
        QCoreApplication::processEvents();
        return completions == 1 && result == expected && runLoop.timers().empty() &&
               !downloads.requests.value(requests() - 1).isOpen();
    }

    [[nodiscard]] bool hasFailed() const { return isFinishedWith(std::nullopt); }

    ScratchFolder scratch;
    std::filesystem::path folder = scratch.path("cache") / "updates";
    FakeDownloads downloads;
    ManualRunLoop runLoop;
    UpdateDownload download{downloads, runLoop, folder};
    std::vector<qint64> progress;
    std::optional<QByteArray> result;
    int completions = 0;
};
