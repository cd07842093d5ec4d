// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "App/AppDelegate.h"
#include "Channel/ServerChannel.h"
#include "LoginItem/LoginItem.h"
#include "Platform/Launcher/LauncherCount.h"
#include "Platform/Process/Bundle.h"
#include "Platform/Windowing/WindowPresence.h"
#include "Support/EngineFixture.h"
#include "Support/FakeHttp.h"
#include "Support/FakeTray.h"
#include "Support/Signer.h"
#include "Updates/StandardUpdaterController.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QWidget>

/// A login item that is what the test says.
class FakeLoginItem final : public LoginItem
{
public:
    [[nodiscard]] bool isEnabled() const override { return isOn; }

    [[nodiscard]] std::optional<QString> setEnabled(bool enabled) override
    {
        if (refusal.isEmpty())
            isOn = enabled;
        return refusal.isEmpty() ? std::nullopt : std::optional(refusal);
    }

    bool isOn = false;
    QString refusal;
};

/// Shows windows and writes down what it was asked for.
class FakeWindowPresence final : public WindowPresence
{
public:
    void adopt(QWidget & /*window*/) override {}

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
    QStringList log;
};

/// The whole application but for its process entry, on a manual clock and without a desktop.
struct ApplicationFixture : EngineFixture
{
    /// The question of the first launch counts as answered unless a test takes that back.
    ApplicationFixture()
    {
        QApplication::setQuitOnLastWindowClosed(false);
        preferences.setValue(QStringLiteral("OBOnboarded"), true);
    }

    void launch() { delegate.applicationDidFinishLaunching(); }

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

    Tray tray;
    MemoryPreferences updaterSettings;
    FakeLoginItem loginItem;
    FakeWindowPresence presence;
    QTemporaryDir bundleFolder;
    Bundle bundle{bundleFolder.path()};
    FakeHttp http;
    Signer makers;
    ServerChannel channel{{http, preferences, runLoop, bundle, {6, 1, 0}},
                          {QStringLiteral("https://makers.invalid"), makers.publicKeyBase64()}};
    LauncherCount launcherCount{QStringLiteral("test"), QDBusConnection(QStringLiteral("none"))};
    SPUStandardUpdaterController updaterController{updaterSettings};
    AppDelegate delegate{{engine, runLoop, preferences, loginItem, updaterController, presence, bundle,
                          channel, launcherCount, [this] { return std::make_unique<FakeTrayItem>(tray); },
                          [this] { presence.log.append(QStringLiteral("crash reporter")); }}};
};
