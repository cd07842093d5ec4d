// SPDX-License-Identifier: GPL-3.0-or-later
#include "Updater.h"

#include "Bundle.h"
#include "Dates.h"
#include "Http.h"
#include "UpdateDownload.h"
#include "UpdaterTexts.h"

#include <QPointer>
#include <QSysInfo>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <type_traits>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr std::chrono::seconds feedTimeout = 30s;
constexpr int statusOk = 200;

/// Time without a successful check until the user is told.
constexpr Interval staleAfter = 24h * 14;

/// Delays the first check until the program is up.
constexpr Interval startDelay = 3s;

/// A version that runs for this long passes its trial.
constexpr Interval trialDuration = 10s;

/// The version of the C library, which decides where an archive runs; no version when it is another library.
UpdateVersion libraryVersion()
{
    constexpr auto prefix = "glibc "_L1;
    std::array<char, 64> name = {};
    confstr(_CS_GNU_LIBC_VERSION, name.data(), name.size());
    const QString text = QString::fromLatin1(name.data());
    return text.startsWith(prefix) ? UpdateVersion(text.sliced(prefix.size())) : UpdateVersion();
}

bool canUpdate(const SPUUpdater::Configuration &configuration)
{
    return configuration.key && Http::isAllowed(configuration.feed) && configuration.installed.isValid();
}

} // namespace

SPUUpdater::Configuration SPUUpdater::Configuration::of(const Bundle &bundle)
{
    const QString feed = bundle.infoText(u"SUFeedURL"_s).value_or(QString());
    const QString key = bundle.infoText(u"SUPublicEDKey"_s).value_or(QString());
    return {QUrl(feed, QUrl::StrictMode), UpdateSignature::parsePublicKey(key.toLatin1()),
            UpdateVersion(bundle.shortVersion()), QSysInfo::buildCpuArchitecture(), libraryVersion()};
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
    bool isAsking = false;
    if (canUpdate(m_configuration)) {
        m_state = Idle();
        scheduleChecks();
        isAsking = m_settings.recordLaunch() && !m_settings.automaticChecks();
    }
    if (isAsking || m_services.installer.failedVersion().isValid())
        m_greeting =
            m_services.runLoop.scheduleOnce(m_earliestCheck, 1s, [this, isAsking] { greet(isAsking); });
}

void SPUUpdater::greet(bool isAsking)
{
    if (const UpdateVersion failed = m_services.installer.failedVersion(); failed.isValid()) {
        m_services.installer.forgetFailure();
        m_settings.pause(failed, m_services.runLoop.now());
        tell(UpdaterTexts::failedTrial(failed.text(), m_configuration.installed.text()), Occasion::Unasked);
        // The question would replace the message; the next start asks it.
        return;
    }
    if (!isAsking || m_settings.automaticChecks())
        return;
    m_services.driver.askPermission([self = QPointer(this)](bool isAllowed) {
        if (self)
            self->setAutomaticallyChecksForUpdates(isAllowed);
    });
}

void SPUUpdater::checkForUpdates()
{
    if (is<Off>())
        tell(UpdaterTexts::notConfigured(), Occasion::AskedFor);
    else if (work()) {
        work()->occasion = Occasion::AskedFor;
        showProgress();
    } else if (m_ready)
        offerRelaunch(Occasion::AskedFor);
    else
        check(Occasion::AskedFor);
}

void SPUUpdater::confirmAtQuit()
{
    m_services.installer.confirm();
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
    const bool isAcquiring = is<Downloading>() || is<Preparing>();
    if (!downloads && isAcquiring && work()->occasion == Occasion::Unasked)
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
    if (!answer || answer->status != statusOk) {
        useFeed(FeedProblem::Unreadable);
        return;
    }
    m_services.readFeed(answer->body, *m_configuration.key, *std::get<Checking>(m_state).exchange,
                        [this](const FeedResult &result) { useFeed(result); });
}

void SPUUpdater::useFeed(const FeedResult &result)
{
    auto &checking = std::get<Checking>(m_state);
    const Occasion occasion = checking.occasion;
    // Called from its own callback, so deletion is deferred.
    checking.exchange.release()->deleteLater();
    m_state = Idle();
    if (const std::optional<UpdaterText> text = objection(result)) {
        finish(occasion, *text);
        return;
    }
    const auto &feed = std::get<Appcast>(result);
    m_settings.setFeedSerial(feed.serial);
    m_settings.setLastSuccess(m_services.runLoop.now());
    const UpdateCircumstances facts = circumstances(occasion);
    const auto choice = chooseUpdate(feed, facts);
    if (const auto *item = std::get_if<AppcastItem>(&choice))
        handleUpdate(*item, occasion);
    else
        finish(occasion, UpdaterTexts::noUpdate(std::get<NoUpdate>(choice), facts.installed.text()));
}

std::optional<UpdaterText> SPUUpdater::objection(const FeedResult &result) const
{
    if (const auto *problem = std::get_if<FeedProblem>(&result))
        return *problem == FeedProblem::NotGenuine ? UpdaterTexts::forgedFeed() : UpdaterTexts::noFeed();
    const auto &feed = std::get<Appcast>(result);
    if (feed.serial < m_settings.feedSerial())
        return UpdaterTexts::oldFeed();
    if (feed.expires < calendarDate(m_services.runLoop.now()))
        return UpdaterTexts::expiredFeed(feed.expires);
    return std::nullopt;
}

UpdateCircumstances SPUUpdater::circumstances(Occasion occasion)
{
    const UpdateVersion next = m_services.installer.nextVersion();
    return {next > m_configuration.installed ? next : m_configuration.installed,
            u"linux"_s,
            m_configuration.architecture,
            m_configuration.systemVersion,
            calendarDate(m_services.runLoop.now()),
            m_settings.skippedVersion(),
            m_settings.rolloutGroup(),
            occasion == Occasion::AskedFor};
}

void SPUUpdater::finish(Occasion occasion, const UpdaterText &text)
{
    m_state = Idle();
    if (occasion == Occasion::Unasked) {
        warnIfStale();
        return;
    }
    m_services.driver.hideProgress();
    const Date success = m_settings.lastSuccess().value_or(m_services.runLoop.now());
    const bool isStale = m_services.runLoop.now() - success > staleAfter;
    const QString warning =
        isStale ? u"\n\n"_s + UpdaterTexts::staleWarning(calendarDate(success)).information : QString();
    tell({text.message, text.information + warning}, occasion);
}

void SPUUpdater::warnIfStale()
{
    const Date now = m_services.runLoop.now();
    const std::optional<Date> success = m_settings.lastSuccess();
    // A date in the future means that the clock was set back since.
    if (!success || *success > now)
        m_settings.setLastSuccess(now);
    else if (now - std::max(*success, m_settings.lastWarning().value_or(*success)) > staleAfter) {
        m_settings.setLastWarning(now);
        tell(UpdaterTexts::staleWarning(calendarDate(*success)), Occasion::Unasked);
    }
}

void SPUUpdater::tell(const UpdaterText &text, Occasion occasion)
{
    m_hasOpenOffer = false;
    m_services.driver.tell(text.message, text.information, occasion);
}
