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
#include <utility>
#include <variant>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr std::chrono::seconds feedLimit = 30s;
constexpr int statusOk = 200;

/// A check that is due waits until the program has started.
constexpr Interval startDelay = 3s;

/// A version that has run for this long has started well.
constexpr Interval trialLength = 10s;

/// Who wants to be asked later, or quits rarely, is asked again after this time.
constexpr Interval reminderDelay = 24h;

constexpr Interval staleAfter = 24h * 30;

UpdaterDriver::Offer offerOf(const AppcastItem &item, const UpdateVersion &installed,
                             UpdateInstaller::Ability ability)
{
    return {item.displayVersion, installed.text(), item.releaseNotes,
            ability == UpdateInstaller::Ability::Itself, ability != UpdateInstaller::Ability::NotAllowed};
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
    m_isStarted = true;
    const Date now = m_services.runLoop.now();
    m_earliestCheck = now + startDelay;
    if (m_services.installer.isOnTrial())
        m_confirmation = m_services.runLoop.scheduleOnce(now + trialLength, trialLength,
                                                         [this] { m_services.installer.confirm(); });
    if (isOff())
        return;
    awaitNextCheck();
    const bool hasLaunched = m_settings.noteLaunch();
    if (!hasLaunched || m_settings.automaticChecks())
        return;
    m_services.driver.askPermission([self = QPointer(this)](bool isAllowed) {
        if (self)
            self->setAutomaticallyChecksForUpdates(isAllowed);
    });
}

void SPUUpdater::checkForUpdates()
{
    check(Occasion::AskedFor);
}

void SPUUpdater::installAtQuit()
{
    // Whoever gets as far as to quit has started well.
    m_services.installer.confirm();
    const bool isWanted = m_isAgreed || automaticallyDownloadsUpdates();
    if (m_state == State::Ready && isWanted && m_services.installer.activate(m_item->version))
        m_settings.setTriedVersion(m_item->version);
}

std::chrono::seconds SPUUpdater::updateCheckInterval() const
{
    return m_settings.checkInterval();
}

void SPUUpdater::setUpdateCheckInterval(std::chrono::seconds interval)
{
    m_settings.setCheckInterval(interval);
    awaitNextCheck();
}

bool SPUUpdater::automaticallyChecksForUpdates() const
{
    return m_settings.automaticChecks().value_or(false);
}

void SPUUpdater::setAutomaticallyChecksForUpdates(bool checks)
{
    m_settings.setAutomaticChecks(checks);
    awaitNextCheck();
}

bool SPUUpdater::automaticallyDownloadsUpdates() const
{
    return m_settings.automaticDownloads();
}

void SPUUpdater::setAutomaticallyDownloadsUpdates(bool downloads)
{
    m_settings.setAutomaticDownloads(downloads);
    if (!downloads && m_state == State::Downloading && !isAskedFor())
        cancel();
}

void SPUUpdater::awaitNextCheck()
{
    m_firstCheck = {};
    m_regularCheck = {};
    if (isOff() || !automaticallyChecksForUpdates())
        return;
    const Interval interval = updateCheckInterval();
    const Date now = m_services.runLoop.now();
    const std::optional<Date> last = m_settings.lastCheck();
    // A check in the future was made before the clock was set back.
    const Date due = last && *last <= now ? *last + interval : now;
    const auto checkNow = [this] { check(Occasion::Unasked); };
    if (due < now + interval)
        m_firstCheck = m_services.runLoop.scheduleOnce(std::max(due, m_earliestCheck), 1s, checkNow);
    m_regularCheck = m_services.runLoop.scheduleRepeating(interval, 1min, checkNow);
}

void SPUUpdater::check(Occasion occasion)
{
    if (isOff()) {
        m_services.driver.tell(UpdaterTexts::notConfigured().message,
                               UpdaterTexts::notConfigured().information);
        return;
    }
    if (m_state != State::Idle) {
        if (occasion == Occasion::Unasked)
            return;
        m_occasion = Occasion::AskedFor;
        if (m_state == State::Ready)
            offerRelaunch(Occasion::AskedFor);
        else
            showProgress();
        return;
    }
    m_state = State::Checking;
    m_occasion = occasion;
    m_settings.setLastCheck(m_services.runLoop.now());
    awaitNextCheck();
    showProgress();
    m_exchange = std::make_unique<QObject>();
    m_services.http.get(m_configuration.feed, feedLimit, *m_exchange,
                        [this](const std::optional<HttpAnswer> &answer) { judge(answer); });
}

void SPUUpdater::judge(const std::optional<HttpAnswer> &answer)
{
    // It is what is calling.
    m_exchange.release()->deleteLater();
    if (!answer || answer->status != statusOk) {
        finish(UpdaterTexts::noFeed());
        return;
    }
    const auto parsed = parseAppcast(answer->body, &Http::isAllowed);
    const auto *feed = std::get_if<Appcast>(&parsed);
    if (!feed) {
        finish(UpdaterTexts::noFeed());
        return;
    }
    noteSuccess(*feed);
    const auto choice = chooseUpdate(*feed, circumstances());
    if (const auto *item = std::get_if<AppcastItem>(&choice))
        take(*item);
    else
        finish(UpdaterTexts::noUpdate(std::get<NoUpdate>(choice), m_configuration.installed.text()));
}

void SPUUpdater::noteSuccess(const Appcast &feed)
{
    // Who plays an old feed again can keep updates away, but not unnoticed.
    const QDateTime newest = m_settings.newestFeed();
    if (newest.isValid() && (!feed.date.isValid() || feed.date < newest))
        return;
    m_settings.setLastSuccess(m_services.runLoop.now());
    if (feed.date.isValid() && feed.date <= circumstances().now.addDays(1))
        m_settings.setNewestFeed(feed.date);
}

UpdateCircumstances SPUUpdater::circumstances() const
{
    return {m_configuration.installed,
            u"linux"_s,
            m_configuration.architecture,
            m_configuration.systemVersion,
            calendarDate(m_services.runLoop.now()),
            m_settings.skippedVersion(),
            isAskedFor()};
}

void SPUUpdater::take(const AppcastItem &item)
{
    m_state = State::Idle;
    const std::optional<Date> remindAfter = m_settings.remindAfter();
    const Date now = m_services.runLoop.now();
    // A date beyond the delay was kept before the clock was set back.
    const bool isToWait = remindAfter && *remindAfter > now && *remindAfter <= now + reminderDelay;
    // It was given up at its first start, and would be again.
    const bool hasFailed = item.version == m_settings.triedVersion();
    if (!isAskedFor() && (hasFailed || (isToWait && !item.isCritical)))
        return;
    const bool isSilent = !isAskedFor() && automaticallyDownloadsUpdates() &&
                          m_services.installer.ability() == UpdateInstaller::Ability::Itself;
    if (isSilent)
        download(item);
    else if (isAskedFor() || !m_isOffering)
        offer(item);
}

void SPUUpdater::offer(const AppcastItem &item)
{
    if (isAskedFor())
        m_services.driver.hideProgress();
    m_isOffering = true;
    const UpdateInstaller::Ability ability = m_services.installer.ability();
    m_services.driver.offerUpdate(offerOf(item, m_configuration.installed, ability), m_occasion,
                                  [self = QPointer(this), item, ability](UpdaterDriver::Answer answer) {
                                      if (!self)
                                          return;
                                      self->m_isOffering = false;
                                      if (answer == UpdaterDriver::Answer::Skip)
                                          self->m_settings.setSkippedVersion(item.version);
                                      else if (answer == UpdaterDriver::Answer::Later)
                                          self->m_settings.setRemindAfter(self->m_services.runLoop.now() +
                                                                          reminderDelay);
                                      else if (ability != UpdateInstaller::Ability::Itself)
                                          self->m_services.openMakersPage();
                                      else if (self->m_state == State::Idle) {
                                          self->m_occasion = Occasion::AskedFor;
                                          self->m_isAgreed = true;
                                          self->download(item);
                                      }
                                  });
}

void SPUUpdater::download(const AppcastItem &item)
{
    m_state = State::Downloading;
    m_item = item;
    showProgress();
    m_services.download.start(
        {item.archive, item.length, item.version.text()},
        [this, length = item.length](qint64 received) {
            if (isAskedFor())
                m_services.driver.setProgress(static_cast<double>(received) / static_cast<double>(length));
        },
        [this, item](const std::optional<QByteArray> &archive) { downloaded(item, archive); });
}

void SPUUpdater::downloaded(const AppcastItem &item, const std::optional<QByteArray> &archive)
{
    if (!archive) {
        finish(UpdaterTexts::noDownload());
        return;
    }
    m_state = State::Preparing;
    showProgress();
    m_services.installer.prepare(*archive, item, *this, [this, item](std::optional<UpdateFailure> failure) {
        prepared(item, failure);
    });
}

void SPUUpdater::prepared(const AppcastItem &item, std::optional<UpdateFailure> failure)
{
    if (failure) {
        // The next check would bring the same archive.
        m_settings.setRemindAfter(m_services.runLoop.now() + reminderDelay);
        finish(UpdaterTexts::failure(*failure));
        return;
    }
    m_state = State::Ready;
    if (isAskedFor())
        m_services.driver.hideProgress();
    if (isAskedFor() || item.isCritical)
        offerRelaunch(m_occasion);
    else
        m_reminder = m_services.runLoop.scheduleOnce(m_services.runLoop.now() + reminderDelay, 1h,
                                                     [this] { offerRelaunch(Occasion::Unasked); });
}

void SPUUpdater::offerRelaunch(Occasion occasion)
{
    m_services.driver.offerRelaunch(m_item->displayVersion, occasion, [self = QPointer(this)](bool isNow) {
        if (!self || !isNow)
            return;
        self->m_isAgreed = true;
        self->m_services.relaunch();
    });
}

void SPUUpdater::showProgress()
{
    if (!isAskedFor())
        return;
    const auto cancelled = [self = QPointer(this)] {
        if (self)
            self->cancel();
    };
    if (m_state == State::Checking)
        m_services.driver.showProgress(u"Recherche de mises à jour…"_s, cancelled);
    else if (m_state == State::Downloading)
        m_services.driver.showProgress(u"Téléchargement de OrvaneBreak %1…"_s.arg(m_item->displayVersion),
                                       cancelled);
    else
        m_services.driver.showProgress(u"Vérification et installation…"_s, cancelled);
}

void SPUUpdater::cancel()
{
    m_services.driver.hideProgress();
    m_occasion = Occasion::Unasked;
    if (m_state == State::Downloading)
        m_services.download.cancel();
    if (m_state == State::Checking || m_state == State::Downloading) {
        m_exchange.reset();
        m_item.reset();
        m_isAgreed = false;
        m_state = State::Idle;
    }
}

void SPUUpdater::finish(const UpdaterText &text)
{
    m_state = State::Idle;
    m_item.reset();
    m_isAgreed = false;
    if (!isAskedFor())
        return;
    m_services.driver.hideProgress();
    tell(text);
    m_occasion = Occasion::Unasked;
}

void SPUUpdater::tell(const UpdaterText &text)
{
    const std::optional<Date> success = m_settings.lastSuccess();
    const bool isStale = success && m_services.runLoop.now() - *success > staleAfter;
    const QString warning =
        isStale ? u"\n\n"_s + UpdaterTexts::staleWarning(calendarDate(*success)) : QString();
    m_services.driver.tell(text.message, text.information + warning);
}

bool SPUUpdater::isOff() const
{
    return !m_isStarted || !m_configuration.key || !Http::isAllowed(m_configuration.feed) ||
           !m_configuration.installed.isValid();
}
