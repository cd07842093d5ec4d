// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdaterDialogs.h"

#include "Alert.h"

#include <QProgressBar>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int skipResult = 2;
constexpr int progressSteps = 1000;

QString describe(const UpdaterDriver::Offer &offer)
{
    QString text =
        u"La version %1 est disponible\u202f; tu as la version %2."_s.arg(offer.version, offer.installed);
    switch (offer.ability) {
    case UpdateInstaller::Ability::Itself:
        break;
    case UpdateInstaller::Ability::PackageManager:
        text += u" OrvaneBreak a été installé par un autre programme, qui doit le mettre à jour."_s;
        break;
    case UpdateInstaller::Ability::Unpacked:
        text +=
            u" Cette copie n'est pas installée\u00a0: prends la nouvelle sur le site et lance son fichier «\u00a0install\u00a0»."_s;
        break;
    case UpdateInstaller::Ability::NotAllowed:
        text += u" OrvaneBreak ne peut pas écrire dans son dossier\u00a0: installe-la à la main."_s;
        break;
    }
    return offer.notes.isEmpty() ? text : text + u"\n\n"_s + offer.notes;
}

UpdaterDriver::Answer answerOf(int result)
{
    if (result == QDialog::Accepted)
        return UpdaterDriver::Answer::Install;
    return result == skipResult ? UpdaterDriver::Answer::Skip : UpdaterDriver::Answer::Later;
}

} // namespace

UpdaterDialogs::UpdaterDialogs(AlertQueue &alerts)
    : m_alerts(alerts)
{
}

void UpdaterDialogs::askPermission(std::function<void(bool)> answered)
{
    auto dialog = std::make_unique<Alert>(
        u"updatePermission"_s, u"Rechercher les mises à jour automatiquement\u202f?"_s,
        u"OrvaneBreak peut demander à ses auteurs, une fois par heure, s'il existe "
        u"une nouvelle version. Tu peux "
        "changer d'avis dans les réglages."_s);
    dialog->addDefaultButton(u"Rechercher automatiquement"_s);
    dialog->addCancelButton(u"Ne pas rechercher"_s);
    show(
        std::move(dialog),
        [answered = std::move(answered)](int result) { answered(result == QDialog::Accepted); },
        Occasion::AskedFor);
}

void UpdaterDialogs::offerUpdate(const Offer &offer, Occasion occasion, std::function<void(Answer)> answered)
{
    auto dialog =
        std::make_unique<Alert>(u"updateOffer"_s, u"Une nouvelle version d'OrvaneBreak"_s, describe(offer));
    dialog->addDefaultButton(offer.ability == UpdateInstaller::Ability::Itself ? u"Installer"_s
                                                                               : u"Ouvrir le site"_s);
    dialog->addCancelButton(u"Plus tard"_s);
    if (!offer.isCritical)
        dialog->addButton(u"Ignorer cette version"_s, skipResult);
    show(
        std::move(dialog), [answered = std::move(answered)](int result) { answered(answerOf(result)); },
        occasion);
}

void UpdaterDialogs::offerRelaunch(const QString &version, Occasion occasion,
                                   std::function<void(bool)> answered)
{
    auto dialog = std::make_unique<Alert>(
        u"updateReady"_s, u"OrvaneBreak %1 est prêt"_s.arg(version),
        u"La nouvelle version démarre tout de suite, ou la prochaine fois que tu ouvres OrvaneBreak."_s);
    dialog->addDefaultButton(u"Installer et relancer"_s);
    dialog->addCancelButton(u"Plus tard"_s);
    show(
        std::move(dialog),
        [answered = std::move(answered)](int result) { answered(result == QDialog::Accepted); }, occasion);
}

void UpdaterDialogs::showProgress(const QString &text, std::function<void()> cancelled)
{
    hideProgress();
    auto dialog = std::make_unique<Alert>(u"updateProgress"_s, text, QString());
    m_progress = dialog.get();
    m_bar = new QProgressBar;
    m_bar->setObjectName(u"updateProgressBar"_s);
    m_bar->setAccessibleName(text);
    m_bar->setTextVisible(false);
    // Indeterminate until the first call of setProgress().
    m_bar->setRange(0, 0);
    dialog->addAccessory(m_bar);
    dialog->addCancelButton(u"Annuler"_s);
    show(
        std::move(dialog), [cancelled = std::move(cancelled)](int /*result*/) { cancelled(); },
        Occasion::AskedFor);
}

void UpdaterDialogs::setProgress(double fraction)
{
    if (!m_bar)
        return;
    m_bar->setRange(0, progressSteps);
    m_bar->setValue(static_cast<int>(std::clamp(fraction, 0.0, 1.0) * progressSteps));
}

void UpdaterDialogs::hideProgress()
{
    m_alerts.withdraw(m_progress);
    m_progress = nullptr;
}

void UpdaterDialogs::tell(const QString &message, const QString &information, Occasion occasion)
{
    auto dialog = std::make_unique<Alert>(u"updateAnswer"_s, message, information);
    dialog->addDefaultButton(u"OK"_s);
    show(std::move(dialog), [](int /*result*/) {}, occasion);
}

void UpdaterDialogs::show(std::unique_ptr<Alert> dialog, AlertQueue::Finished finished, Occasion occasion)
{
    m_alerts.withdraw(m_dialog);
    m_dialog = dialog.get();
    m_alerts.add(std::move(dialog), std::move(finished),
                 occasion == Occasion::AskedFor ? AlertQueue::Attention::Front
                                                : AlertQueue::Attention::Quiet);
}
