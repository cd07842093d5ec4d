// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Appcast.h"
#include "RunLoop.h"
#include "UpdateChoice.h"
#include "UpdateInstaller.h"
#include "UpdateSignature.h"
#include "UpdaterDriver.h"
#include "UpdaterSettings.h"

#include <QObject>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class Bundle;
class Http;
class Preferences;
class UpdateDownload;
struct HttpAnswer;
struct UpdaterText;

/// Keeps the program current: looks for updates when it is time or the user asks, downloads, has them
/// installed and begins with them at the end of the program. User-interface thread only; nothing waits.
class SPUUpdater final : public QObject
{
    Q_OBJECT

public:
    /// What the updater works with; the references outlive it.
    struct Services
    {
        RunLoop &runLoop;
        Preferences &store;
        Http &http;
        UpdateDownload &download;
        UpdateInstaller &installer;
        UpdaterDriver &driver;
        std::function<void()> relaunch; ///< Ends the program and starts it again.
        std::function<void()> openMakersPage;
    };

    /// What this build is, and where its updates come from.
    struct Configuration
    {
        QUrl feed;
        std::optional<Ed25519::PublicKey> key;
        UpdateVersion installed;
        QString architecture;
        UpdateVersion systemVersion; ///< No version when unknown.

        /// What stands in the information dictionary under "SUFeedURL", "SUPublicEDKey" and
        /// "CFBundleShortVersionString", for this machine.
        [[nodiscard]] static Configuration of(const Bundle &bundle);
    };

    SPUUpdater(Services services, Configuration configuration);

    /// Begins to look for updates by itself, if the user wants that, and asks whether they do at the second
    /// start. Without a key, or with a feed that the program may not talk to, it stays off and says so only
    /// when the user asks for a check. Called once.
    void start();

    /// Looks for an update at the user's request. It always ends with an answer.
    void checkForUpdates();

    /// Ends the trial of this version, and makes an update that was downloaded the one that starts next: one
    /// that the user agreed to, or any with automatic downloads on. Called once, when the program ends.
    void installAtQuit();

    /// Time between two automatic checks, kept by the updater; one day until it is set.
    [[nodiscard]] std::chrono::seconds updateCheckInterval() const;
    void setUpdateCheckInterval(std::chrono::seconds interval);

    /// Whether to look for updates unasked; false until the user has decided.
    [[nodiscard]] bool automaticallyChecksForUpdates() const;
    void setAutomaticallyChecksForUpdates(bool checks);

    /// Whether to install what was found unasked; false until the user has decided.
    [[nodiscard]] bool automaticallyDownloadsUpdates() const;
    void setAutomaticallyDownloadsUpdates(bool downloads);

private:
    enum class State
    {
        Idle,
        Checking,
        Downloading,
        Preparing,
        Ready ///< An update waits for the end of the program.
    };

    using Occasion = UpdaterDriver::Occasion;

    void awaitNextCheck();
    void check(Occasion occasion);
    void judge(const std::optional<HttpAnswer> &answer);
    void noteSuccess(const Appcast &feed);
    void take(const AppcastItem &item);
    void offer(const AppcastItem &item);
    void download(const AppcastItem &item);
    void downloaded(const AppcastItem &item, const std::optional<QByteArray> &archive);
    void prepared(const AppcastItem &item, std::optional<UpdateFailure> failure);
    void offerRelaunch(Occasion occasion);
    void showProgress();
    void cancel();
    void finish(const UpdaterText &text);
    void tell(const UpdaterText &text);
    [[nodiscard]] bool isOff() const;
    [[nodiscard]] bool isAskedFor() const { return m_occasion == Occasion::AskedFor; }
    [[nodiscard]] UpdateCircumstances circumstances() const;

    Services m_services;
    Configuration m_configuration;
    UpdaterSettings m_settings;
    State m_state = State::Idle;
    Occasion m_occasion = Occasion::Unasked; ///< Of what is going on.
    std::optional<AppcastItem> m_item;       ///< What is downloaded, prepared or ready.
    bool m_isStarted = false;
    bool m_isAgreed = false;   ///< The user wants what is ready.
    bool m_isOffering = false; ///< The user has been asked and has not answered.
    Date m_earliestCheck;
    Timer m_firstCheck;
    Timer m_regularCheck;
    Timer m_confirmation;
    Timer m_reminder;
    std::unique_ptr<QObject> m_exchange; ///< Context of the check that goes on.
};
