// SPDX-License-Identifier: GPL-3.0-or-later
#include "Updater.h"

#include "Bundle.h"
#include "Dates.h"
#include "Http.h"
#include "SystemVersion.h"
#include "UpdateDownload.h"
#include "UpdaterTexts.h"

#include <QPointer>
#include <QSysInfo>

#include <algorithm>
#include <type_traits>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr std::chrono::seconds feedTimeout = 30s;
constexpr int statusOk = 200;

/// Delays the first check until the program is up.
constexpr Interval startDelay = 3s;

/// A version that runs for this long passes its trial.
constexpr Interval trialDuration = 10s;

/// Time until a postponed question is asked again.
constexpr Interval reminderDelay = 24h;

constexpr Interval staleAfter = 24h * 30;

bool canUpdate(const SPUUpdater::Configuration &configuration)
{
    return configuration.key && Http::isAllowed(configuration.feed) && configuration.installed.isValid();
}

} // namespace

SPUUpdater::Configuration SPUUpdater::Configuration::of(const Bundle &bundle)
{
    const QString feed = bundle.infoText(u"SUFeedURL"_s).value_or(QString());
    const QString key = bundle.infoText(u"SUPublicEDKey"_s).value_or(QString());
    const SystemVersion system = SystemVersion::current();
    return {QUrl(feed, QUrl::StrictMode), UpdateSignature::parsePublicKey(key.toLatin1()),
            UpdateVersion(bundle.shortVersion()), QSysInfo::buildCpuArchitecture(),
            UpdateVersion(u"%1.%2.%3"_s.arg(system.major).arg(system.minor).arg(system.patch))};
}

SPUUpdater::SPUUpdater(Services services, Configuration configuration)
    : m_services(std::move(services))
    , m_configuration(std::move(configuration))
    , m_settings(m_services.store)
{
}

void SPUUpdater::start()
{
    const Date now = m_services.runLoop.now();
    m_earliestCheck = now + startDelay;
    if (m_services.installer.isOnTrial())
        m_confirmation = m_services.runLoop.scheduleOnce(now + trialDuration, trialDuration,
                                                         [this] { m_services.installer.confirm(); });
    if (!canUpdate(m_configuration))
        return;
    m_state = Idle();
    scheduleChecks();
    const bool hasLaunched = m_settings.recordLaunch();
    if (!hasLaunched || m_settings.automaticChecks())
        return;
    m_services.driver.askPermission([self = QPointer(this)](bool isAllowed) {
        if (self)
            self->setAutomaticallyChecksForUpdates(isAllowed);
    });
}

void SPUUpdater::checkForUpdates()
{
    if (is<Off>()) {
        const UpdaterText text = UpdaterTexts::notConfigured();
        m_services.driver.tell(text.message, text.information);
    } else if (is<Idle>()) {
        check(Occasion::AskedFor);
    } else if (is<Ready>()) {
        offerRelaunch(Occasion::AskedFor);
    } else {
        work()->occasion = Occasion::AskedFor;
        showProgress();
    }
}

void SPUUpdater::installAtQuit()
{
    // A clean exit proves that this version starts.
    m_services.installer.confirm();
    const auto *ready = std::get_if<Ready>(&m_state);
    if (ready && (ready->isAgreed || automaticallyDownloadsUpdates()) &&
        m_services.installer.activate(ready->item.version))
        m_settings.setTriedVersion(ready->item.version);
}

std::chrono::seconds SPUUpdater::updateCheckInterval() const
{
    return m_settings.checkInterval();
}

void SPUUpdater::setUpdateCheckInterval(std::chrono::seconds interval)
{
    m_settings.setCheckInterval(interval);
    scheduleChecks();
}

bool SPUUpdater::automaticallyChecksForUpdates() const
{
    return m_settings.automaticChecks().value_or(false);
}

void SPUUpdater::setAutomaticallyChecksForUpdates(bool checks)
{
    m_settings.setAutomaticChecks(checks);
    scheduleChecks();
}

bool SPUUpdater::automaticallyDownloadsUpdates() const
{
    return m_settings.automaticDownloads();
}

void SPUUpdater::setAutomaticallyDownloadsUpdates(bool downloads)
{
    m_settings.setAutomaticDownloads(downloads);
    const auto *downloading = std::get_if<Downloading>(&m_state);
    if (!downloads && downloading && downloading->occasion == Occasion::Unasked)
        cancel();
}

SPUUpdater::Work *SPUUpdater::work()
{
    return std::visit(
        [](auto &state) -> Work * {
            if constexpr (std::is_base_of_v<Work, std::remove_reference_t<decltype(state)>>)
                return &state;
            else
                return nullptr;
        },
        m_state);
}

void SPUUpdater::scheduleChecks()
{
    m_firstCheck = {};
    m_regularCheck = {};
    if (is<Off>() || !automaticallyChecksForUpdates())
        return;
    const Interval interval = updateCheckInterval();
    const Date now = m_services.runLoop.now();
    const std::optional<Date> last = m_settings.lastCheck();
    // A last check in the future means that the clock was set back since.
    const Date due = last && *last <= now ? *last + interval : now;
    const auto checkIfIdle = [this] {
        if (is<Idle>())
            check(Occasion::Unasked);
    };
    if (due < now + interval)
        m_firstCheck = m_services.runLoop.scheduleOnce(std::max(due, m_earliestCheck), 1s, checkIfIdle);
    m_regularCheck = m_services.runLoop.scheduleRepeating(interval, 1min, checkIfIdle);
}

void SPUUpdater::check(Occasion occasion)
{
    auto exchange = std::make_unique<QObject>();
    QObject &context = *exchange;
    m_state = Checking{{occasion, u"Recherche de mises à jour…"_s}, std::move(exchange)};
    m_settings.setLastCheck(m_services.runLoop.now());
    scheduleChecks();
    showProgress();
    m_services.http.get(m_configuration.feed, feedTimeout, context,
                        [this](const std::optional<HttpAnswer> &answer) { receiveFeed(answer); });
}

void SPUUpdater::receiveFeed(const std::optional<HttpAnswer> &answer)
{
    auto &checking = std::get<Checking>(m_state);
    const Occasion occasion = checking.occasion;
    // Called from its own callback, so deletion is deferred.
    checking.exchange.release()->deleteLater();
    m_state = Idle();
    const std::optional<Appcast> feed =
        answer && answer->status == statusOk ? parseAppcast(answer->body, &Http::isAllowed) : std::nullopt;
    if (!feed) {
        finish(occasion, UpdaterTexts::noFeed());
        return;
    }
    recordSuccess(*feed);
    const auto choice = chooseUpdate(*feed, circumstances(occasion));
    if (const auto *item = std::get_if<AppcastItem>(&choice))
        handleUpdate(*item, occasion);
    else
        finish(occasion,
               UpdaterTexts::noUpdate(std::get<NoUpdate>(choice), m_configuration.installed.text()));
}

void SPUUpdater::recordSuccess(const Appcast &feed)
{
    // A replayed feed can withhold updates but never counts as a successful check.
    const QDateTime newest = m_settings.newestFeed();
    if (newest.isValid() && (!feed.date.isValid() || feed.date < newest))
        return;
    const Date now = m_services.runLoop.now();
    m_settings.setLastSuccess(now);
    if (feed.date.isValid() && feed.date <= calendarDate(now).addDays(1))
        m_settings.setNewestFeed(feed.date);
}

UpdateCircumstances SPUUpdater::circumstances(Occasion occasion) const
{
    return {m_configuration.installed,
            u"linux"_s,
            m_configuration.architecture,
            m_configuration.systemVersion,
            calendarDate(m_services.runLoop.now()),
            m_settings.skippedVersion(),
            occasion == Occasion::AskedFor};
}

void SPUUpdater::handleUpdate(const AppcastItem &item, Occasion occasion)
{
    if (occasion == Occasion::AskedFor) {
        m_services.driver.hideProgress();
        offer(item, occasion);
        return;
    }
    if (isPostponed(item))
        return;
    if (automaticallyDownloadsUpdates() && m_services.installer.ability() == UpdateInstaller::Ability::Itself)
        download(item, occasion, false);
    else if (!m_hasOpenOffer)
        offer(item, occasion);
}

bool SPUUpdater::isPostponed(const AppcastItem &item) const
{
    // This version was rolled back at its first start and would be again.
    if (item.version == m_settings.triedVersion())
        return true;
    const std::optional<Date> remindAfter = m_settings.remindAfter();
    const Date now = m_services.runLoop.now();
    // A date beyond the delay means that the clock was set back since.
    return !item.isCritical && remindAfter && *remindAfter > now && *remindAfter <= now + reminderDelay;
}

void SPUUpdater::offer(const AppcastItem &item, Occasion occasion)
{
    const UpdateInstaller::Ability ability = m_services.installer.ability();
    const bool installsItself = ability == UpdateInstaller::Ability::Itself;
    m_hasOpenOffer = true;
    m_services.driver.offerUpdate(
        {item.displayVersion, m_configuration.installed.text(), item.releaseNotes, installsItself,
         ability != UpdateInstaller::Ability::NotAllowed},
        occasion, [self = QPointer(this), item, installsItself](UpdaterDriver::Answer answer) {
            if (self)
                self->handleAnswer(answer, item, installsItself);
        });
}

void SPUUpdater::handleAnswer(UpdaterDriver::Answer answer, const AppcastItem &item, bool installsItself)
{
    m_hasOpenOffer = false;
    if (answer == UpdaterDriver::Answer::Skip)
        m_settings.setSkippedVersion(item.version);
    else if (answer == UpdaterDriver::Answer::Later)
        m_settings.setRemindAfter(m_services.runLoop.now() + reminderDelay);
    else if (!installsItself)
        m_services.openMakersPage();
    else if (is<Idle>())
        download(item, Occasion::AskedFor, true);
}

void SPUUpdater::download(const AppcastItem &item, Occasion occasion, bool isAgreed)
{
    const QString text = u"Téléchargement d'OrvaneBreak %1…"_s.arg(item.displayVersion);
    m_state = Downloading{{{occasion, text}, item, isAgreed}};
    showProgress();
    m_services.download.start(
        {item.archive, item.length, item.version.text()},
        [this, length = item.length](qint64 received) {
            if (work()->occasion == Occasion::AskedFor)
                m_services.driver.setProgress(static_cast<double>(received) / static_cast<double>(length));
        },
        [this](const std::optional<QByteArray> &archive) { prepare(archive); });
}

void SPUUpdater::prepare(const std::optional<QByteArray> &archive)
{
    Downloading downloading = std::get<Downloading>(m_state);
    if (!archive) {
        finish(downloading.occasion, UpdaterTexts::noDownload());
        return;
    }
    downloading.progressText = u"Vérification et installation…"_s;
    m_state = Preparing{downloading};
    showProgress();
    m_services.installer.prepare(*archive, downloading.item, *this,
                                 [this](const UpdateInstaller::Result &result) { finishPreparing(result); });
}

void SPUUpdater::finishPreparing(const UpdateInstaller::Result &result)
{
    const Preparing preparing = std::get<Preparing>(m_state);
    if (const auto *failure = std::get_if<UpdateFailure>(&result)) {
        // The next check would find the same archive.
        m_settings.setRemindAfter(m_services.runLoop.now() + reminderDelay);
        finish(preparing.occasion, UpdaterTexts::failure(*failure));
        return;
    }
    m_state = Ready{preparing.item, preparing.isAgreed, {}};
    const bool isAskedFor = preparing.occasion == Occasion::AskedFor;
    if (isAskedFor)
        m_services.driver.hideProgress();
    if (isAskedFor || preparing.item.isCritical)
        offerRelaunch(preparing.occasion);
    else
        std::get<Ready>(m_state).reminder = m_services.runLoop.scheduleOnce(
            m_services.runLoop.now() + reminderDelay, 1h, [this] { offerRelaunch(Occasion::Unasked); });
}

void SPUUpdater::offerRelaunch(Occasion occasion)
{
    m_services.driver.offerRelaunch(std::get<Ready>(m_state).item.displayVersion, occasion,
                                    [self = QPointer(this)](bool isNow) {
                                        if (!self || !isNow)
                                            return;
                                        std::get<Ready>(self->m_state).isAgreed = true;
                                        self->m_services.relaunch();
                                    });
}

void SPUUpdater::showProgress()
{
    if (work()->occasion == Occasion::Unasked)
        return;
    m_services.driver.showProgress(work()->progressText, [self = QPointer(this)] {
        if (self)
            self->cancel();
    });
}

void SPUUpdater::cancel()
{
    m_services.driver.hideProgress();
    if (is<Downloading>())
        m_services.download.cancel();
    if (is<Checking>() || is<Downloading>())
        m_state = Idle();
    else if (is<Preparing>())
        // What is being written cannot be stopped.
        work()->occasion = Occasion::Unasked;
}

void SPUUpdater::finish(Occasion occasion, const UpdaterText &text)
{
    m_state = Idle();
    if (occasion == Occasion::Unasked)
        return;
    m_services.driver.hideProgress();
    const std::optional<Date> success = m_settings.lastSuccess();
    const bool isStale = success && m_services.runLoop.now() - *success > staleAfter;
    const QString warning =
        isStale ? u"\n\n"_s + UpdaterTexts::staleWarning(calendarDate(*success)) : QString();
    m_services.driver.tell(text.message, text.information + warning);
}
