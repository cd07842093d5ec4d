// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"
#include "SignedFeed.h"
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
#include <variant>

class Bundle;
class Http;
class Preferences;
class UpdateDownload;
struct HttpAnswer;
struct UpdaterText;

/// Checks for updates on schedule and on request, downloads them, has them installed beside the running
/// version and makes them current, so that the next start uses them. User-interface thread only; nothing
/// blocks.
class SPUUpdater final : public QObject
{
    Q_OBJECT

public:
    /// The references outlive the updater.
    struct Services
    {
        /// As FeedThread::read().
        using ReadFeed = std::function<void(const QByteArray &bytes, const Ed25519::PublicKey &key,
                                            QObject &context, FeedThread::Completion)>;

        RunLoop &runLoop;
        Preferences &store;
        Http &http;
        ReadFeed readFeed;
        UpdateDownload &download;
        UpdateInstaller &installer;
        UpdaterDriver &driver;
        std::function<void()> relaunch; ///< Ends the program and starts it again.
        std::function<void()> openMakersPage;
    };

    /// This build, and the source of its updates.
    struct Configuration
    {
        QUrl feed;
        std::optional<Ed25519::PublicKey> key;
        UpdateVersion installed;
        QString architecture;
        UpdateVersion systemVersion; ///< Of the C library; no version when unknown.

        /// Reads "SUFeedURL", "SUPublicEDKey" and "CFBundleShortVersionString" from the information
        /// dictionary, and the rest from this machine.
        [[nodiscard]] static Configuration of(const Bundle &bundle);
    };

    SPUUpdater(Services services, Configuration configuration);

    /// Starts automatic checks if the user wants them. Three seconds later, when the windows are up, says
    /// which version failed its trial, and from the second start on asks a user who has not decided. Without
    /// a key, a valid version and a feed address that the program may talk to, the updater stays off, which
    /// it only tells a user who asks for a check. Called once.
    void start();

    /// Checks at the user's request, and always shows a result.
    void checkForUpdates();

    /// Ends the trial of the running version: a clean end proves that it works. Called once, when the program
    /// ends.
    void confirmAtQuit();

    /// Time between two automatic checks, kept by the updater; one day by default.
    [[nodiscard]] std::chrono::seconds updateCheckInterval() const;
    void setUpdateCheckInterval(std::chrono::seconds interval);

    /// Whether to check automatically; false until the user has decided.
    [[nodiscard]] bool automaticallyChecksForUpdates() const;
    void setAutomaticallyChecksForUpdates(bool checks);

    /// Whether to install updates without asking; false until the user has decided.
    [[nodiscard]] bool automaticallyDownloadsUpdates() const;
    void setAutomaticallyDownloadsUpdates(bool downloads);

private:
    using Occasion = UpdaterDriver::Occasion;

    struct Off ///< Not started, or not configured for updates.
    {
    };
    struct Idle
    {
    };
    struct Work
    {
        Occasion occasion;
        QString progressText; ///< Shown while the user has asked for this.
    };
    struct Checking : Work
    {
        std::unique_ptr<QObject> exchange; ///< Context of the request and of the reading of its answer.
    };
    struct Acquisition : Work
    {
        AppcastItem item;
    };
    struct Downloading : Acquisition
    {
    };
    struct Preparing : Acquisition
    {
        std::unique_ptr<QObject> exchange; ///< Context of the installer's answer.
    };
    using State = std::variant<Off, Idle, Checking, Downloading, Preparing>;

    /// A version that the next start uses.
    struct Ready
    {
        AppcastItem item;
        Timer reminder;
    };

    template <typename Kind>
    [[nodiscard]] bool is() const
    {
        return std::holds_alternative<Kind>(m_state);
    }
    [[nodiscard]] Work *work(); ///< Null when nothing is going on.
    void scheduleChecks();
    void greet(bool isAsking);
    void check(Occasion occasion);
    void receiveFeed(const std::optional<HttpAnswer> &answer);
    void useFeed(const FeedResult &result);
    [[nodiscard]] std::optional<UpdaterText> objection(const FeedResult &result) const;
    [[nodiscard]] UpdateCircumstances circumstances(Occasion occasion);
    void handleUpdate(const AppcastItem &item, Occasion occasion);
    [[nodiscard]] bool isPostponed(const AppcastItem &item) const;
    void offer(const AppcastItem &item, Occasion occasion);
    void handleAnswer(UpdaterDriver::Answer answer, const AppcastItem &item, bool installsItself);
    void download(const AppcastItem &item, Occasion occasion);
    void prepare(const std::optional<QByteArray> &archive);
    void finishPreparing(const UpdateInstaller::Result &result);
    void makeCurrent(const AppcastItem &item, Occasion occasion);
    void offerRelaunch(Occasion occasion);
    void showProgress();
    void cancel();
    void fail(const Acquisition &acquisition, const UpdaterText &text);
    void finish(Occasion occasion, const UpdaterText &text);
    void warnIfStale();
    void tell(const UpdaterText &text, Occasion occasion);

    Services m_services;
    Configuration m_configuration;
    UpdaterSettings m_settings;
    State m_state;
    std::optional<Ready> m_ready; ///< In any state.
    bool m_hasOpenOffer = false;  ///< In any state: the last offer of an update is not answered yet.
    Date m_earliestCheck;
    Timer m_firstCheck;
    Timer m_regularCheck;
    Timer m_greeting;
    Timer m_confirmation;
};
