// SPDX-License-Identifier: GPL-3.0-or-later
// The course of an update, from the choice to the version that the next start uses.
#include "UpdateDownload.h"
#include "Updater.h"
#include "UpdaterTexts.h"

#include <QPointer>

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Time until a postponed question is asked again.
constexpr Interval reminderDelay = 24h;

} // namespace

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
        download(item, occasion);
    else if (!m_hasOpenOffer)
        offer(item, occasion);
}

bool SPUUpdater::isPostponed(const AppcastItem &item) const
{
    const Date now = m_services.runLoop.now();
    // A date that is further away means that the clock was set back since.
    const auto isAhead = [now](std::optional<Date> date) {
        return date && *date > now && *date <= now + reminderDelay;
    };
    const std::optional<Date> paused = m_settings.pausedSince(item.version);
    return (paused && isAhead(*paused + reminderDelay)) ||
           (!item.isCritical && isAhead(m_settings.remindAfter()));
}

void SPUUpdater::offer(const AppcastItem &item, Occasion occasion)
{
    const UpdateInstaller::Ability ability = m_services.installer.ability();
    const bool installsItself = ability == UpdateInstaller::Ability::Itself;
    m_hasOpenOffer = true;
    m_services.driver.offerUpdate(
        {item.displayVersion, m_configuration.installed.text(), item.releaseNotes, ability, item.isCritical},
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
    else if (is<Idle>() || is<Checking>())
        download(item, Occasion::AskedFor);
}

void SPUUpdater::download(const AppcastItem &item, Occasion occasion)
{
    if (m_services.installer.isInstalled(item.version)) {
        makeCurrent(item, occasion);
        return;
    }
    m_state = Downloading{{{occasion, u"Téléchargement d'OrvaneBreak %1…"_s.arg(item.displayVersion)}, item}};
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
    Acquisition acquisition = std::get<Downloading>(m_state);
    if (!archive) {
        fail(acquisition, UpdaterTexts::noDownload());
        return;
    }
    acquisition.progressText = u"Vérification et installation…"_s;
    auto exchange = std::make_unique<QObject>();
    QObject &context = *exchange;
    m_state = Preparing{acquisition, std::move(exchange)};
    showProgress();
    m_services.installer.prepare(*archive, acquisition.item, context,
                                 [this](const UpdateInstaller::Result &result) { finishPreparing(result); });
}

void SPUUpdater::finishPreparing(const UpdateInstaller::Result &result)
{
    auto &preparing = std::get<Preparing>(m_state);
    // Called from its own callback, so deletion is deferred.
    preparing.exchange.release()->deleteLater();
    const Acquisition acquisition = preparing;
    m_services.download.discard();
    if (const auto *failure = std::get_if<UpdateFailure>(&result))
        fail(acquisition, UpdaterTexts::failure(*failure));
    else
        makeCurrent(acquisition.item, acquisition.occasion);
}

void SPUUpdater::makeCurrent(const AppcastItem &item, Occasion occasion)
{
    m_state = Idle();
    if (!m_services.installer.activate(item.version)) {
        fail({{occasion, {}}, item}, UpdaterTexts::failure(UpdateFailure::Disk));
        return;
    }
    m_ready.emplace(Ready{item, {}});
    const bool isAskedFor = occasion == Occasion::AskedFor;
    if (isAskedFor)
        m_services.driver.hideProgress();
    if (isAskedFor || item.isCritical)
        offerRelaunch(occasion);
    else
        m_ready->reminder = m_services.runLoop.scheduleOnce(m_services.runLoop.now() + reminderDelay, 1h,
                                                            [this] { offerRelaunch(Occasion::Unasked); });
}

void SPUUpdater::offerRelaunch(Occasion occasion)
{
    m_hasOpenOffer = false;
    m_services.driver.offerRelaunch(m_ready->item.displayVersion, occasion,
                                    [self = QPointer(this)](bool isNow) {
                                        if (self && isNow)
                                            self->m_services.relaunch();
                                    });
}

void SPUUpdater::showProgress()
{
    if (work()->occasion == Occasion::Unasked)
        return;
    m_hasOpenOffer = false;
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
    // A version that is being written is finished, but not made current.
    if (work())
        m_state = Idle();
}

void SPUUpdater::fail(const Acquisition &acquisition, const UpdaterText &text)
{
    // The next check would find the same archive.
    m_settings.pause(acquisition.item.version, m_services.runLoop.now());
    finish(acquisition.occasion, text);
}
