// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AlertQueue.h"
#include "AppDelegate.h"
#include "Bundle.h"
#include "EngineFixture.h"
#include "FakeDownloads.h"
#include "FakeHttp.h"
#include "FakeInstaller.h"
#include "FakeTray.h"
#include "FeedMaker.h"
#include "LauncherCount.h"
#include "LoginItem.h"
#include "ServerChannel.h"
#include "Signer.h"
#include "StandardUpdaterController.h"
#include "UpdateDownload.h"
#include "UpdaterDialogs.h"
#include "WindowPresence.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QWidget>

#include <utility>

/// A login item whose state and refusal the test sets.
class FakeLoginItem final : public LoginItem
{
public:
    [[nodiscard]] bool isEnabled() const override { return isOn; }

    [[nodiscard]] bool setEnabled(bool enabled) override
    {
        if (!isRefusing)
            isOn = enabled;
        return !isRefusing;
    }

    bool isOn = false;
    bool isRefusing = false;
};

/// Shows windows and logs the requests.
class FakeWindowPresence final : public WindowPresence
{
public:
    void adopt(QWidget &window) override { adopted.append(window.objectName()); }

    void setAccessory(bool accessory) override
    {
        isAccessory = accessory;
        log.append(accessory ? QStringLiteral("accessory") : QStringLiteral("regular"));
    }

    void bringToFront(QWidget &window) override
    {
        log.append(QStringLiteral("front ") + window.objectName());
        window.show();
        window.activateWindow();
    }

    bool isAccessory = false;
    QStringList adopted; ///< The names of the windows, in order.
    QStringList log;
};

/// The whole application except main(), on a manual clock and without a desktop.
struct ApplicationFixture : EngineFixture
{
    /// The first-launch question counts as answered; a test can reset OBOnboarded.
    explicit ApplicationFixture(SPUUpdater::Configuration updates = {}, const QJsonObject &updaterStore = {})
        : updateConfiguration(std::move(updates))
        , updaterSettings(updaterStore)
    {
        QApplication::setQuitOnLastWindowClosed(false);
        preferences.setValue(QStringLiteral("OBOnboarded"), true);
    }

    /// Also runs the work that is postponed until after the first window.
    void launch()
    {
        delegate.applicationDidFinishLaunching();
        runLoop.advance(std::chrono::seconds(1));
    }

    [[nodiscard]] static QWidget *window(const QString &name = QStringLiteral("mainWindow"))
    {
        for (QWidget *candidate : QApplication::topLevelWidgets()) {
            if (candidate->objectName() == name)
                return candidate;
        }
        return nullptr;
    }

    template <typename Widget>
    [[nodiscard]] static Widget *find(const QString &name)
    {
        auto *found = window()->findChild<Widget *>(name);
        if (!found)
            qFatal("no such widget: %s", qPrintable(name));
        return found;
    }

    SPUUpdater::Configuration updateConfiguration;
    MemoryPreferences updaterSettings;
    Tray tray;
    FakeLoginItem loginItem;
    FakeWindowPresence presence;
    QTemporaryDir bundleFolder;
    Bundle bundle{bundleFolder.path()};
    FakeHttp http;
    Signer makers;
    ServerChannel channel{{http, preferences, runLoop, bundle, {6, 1, 0}},
                          {QStringLiteral("https://makers.invalid"), makers.publicKeyBase64()}};
    LauncherCount launcherCount{QStringLiteral("test"), QDBusConnection(QStringLiteral("none"))};
    AlertQueue alerts{engine, presence};
    FakeDownloads downloads;
    UpdateDownload download{downloads, runLoop, bundleFolder.path().toStdString() + "/updates"};
    FakeInstaller installer;
    UpdaterDialogs updaterDialogs{alerts};
    int relaunches = 0;
    int visitsToTheMakers = 0;
    SPUStandardUpdaterController updaterController{
        true,
        {runLoop, updaterSettings, http, &FeedMaker::readUnsigned, download, installer, updaterDialogs,
         [this] { ++relaunches; }, [this] { ++visitsToTheMakers; }},
        updateConfiguration};
    AppDelegate delegate{{engine, runLoop, preferences, loginItem, updaterController, presence, bundle,
                          channel, launcherCount, alerts,
                          [this] { return std::make_unique<FakeTrayItem>(tray); },
                          [this] { presence.log.append(QStringLiteral("crash reporter")); }}};
};
