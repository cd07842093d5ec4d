// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Support/FakeDownloads.h"
#include "Support/FakeHttp.h"
#include "Support/FakeInstaller.h"
#include "Support/FakeUpdaterDriver.h"
#include "Support/FeedMaker.h"
#include "Support/ManualRunLoop.h"
#include "Support/MemoryPreferences.h"
#include "UpdateDownload.h"
#include "Updater.h"

#include <QCoreApplication>
#include <QTemporaryDir>

/// An updater of version 1.0 on a manual clock, with a fake network, installer and user.
struct UpdaterFixture
{
    static constexpr qint64 archiveLength = 1000;

    /// Sets whether to check and to download automatically.
    explicit UpdaterFixture(std::optional<bool> checks = true, bool isDownloading = false)
    {
        if (checks)
            store.setValue(QStringLiteral("SUEnableAutomaticChecks"), *checks);
        store.setValue(QStringLiteral("SUAutomaticallyUpdate"), isDownloading);
    }

    /// Starts the program again, with a new updater.
    SPUUpdater &start()
    {
        updater = std::make_unique<SPUUpdater>(
            SPUUpdater::Services{runLoop, store, http, readFeed, download, installer, driver,
                                 [this] { ++relaunches; }, [this] { ++visits; }},
            configuration);
        updater->start();
        return *updater;
    }

    /// Answers the current check with a feed of these items.
    void answer(const QByteArray &items) { http.answer(HttpAnswer{200, FeedMaker::feed(items)}); }

    /// Completes the current download.
    void deliver() const
    {
        downloads.answer(QByteArray(archiveLength, 'a'), Downloads::End::Complete);
        QCoreApplication::processEvents();
    }

    [[nodiscard]] static QByteArray update(const QByteArray &version = "1.1", const QByteArray &more = {})
    {
        return FeedMaker::item("<s:version>" + version + "</s:version>" + more + FeedMaker::enclosure());
    }

    /// When the feed expires.
    [[nodiscard]] static QByteArray expiry(const QByteArray &date)
    {
        return "<o:expires xmlns:o='urn:orvanebreak:feed'>" + date + "</o:expires>";
    }

    ManualRunLoop runLoop;
    MemoryPreferences store;
    FakeHttp http;
    SPUUpdater::Services::ReadFeed readFeed = &FeedMaker::readUnsigned;
    FakeDownloads downloads;
    QTemporaryDir folder;
    UpdateDownload download{downloads, runLoop, folder.path().toStdString() + "/updates"};
    FakeInstaller installer;
    FakeUpdaterDriver driver;
    int relaunches = 0;
    int visits = 0;
    SPUUpdater::Configuration configuration{QUrl(QStringLiteral("https://makers.invalid/appcast.xml")),
                                            Ed25519::PublicKey{1}, UpdateVersion(QStringLiteral("1.0")),
                                            QStringLiteral("x86_64"), UpdateVersion(QStringLiteral("6.1"))};
    std::unique_ptr<SPUUpdater> updater;
};
