// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdaterTexts.h"

using namespace Qt::StringLiterals;

namespace {

QString dayOf(const QDateTime &date)
{
    return date.toLocalTime().date().toString(u"dd.MM.yyyy"_s);
}

} // namespace

UpdaterText UpdaterTexts::notConfigured()
{
    return {u"Mises à jour indisponibles"_s, u"Cette version d'OrvaneBreak n'est reliée à aucun serveur de "
                                             u"mises à jour sûr\u00a0: il lui manque une "
                                             "adresse https ou la clé de ses auteurs."_s};
}

UpdaterText UpdaterTexts::noFeed()
{
    return {
        u"Vérification impossible"_s,
        u"Le serveur de mises à jour n'a pas donné de réponse utilisable (réseau\u202f?). Réessaie plus tard."_s};
}

UpdaterText UpdaterTexts::forgedFeed()
{
    return {u"Liste des versions refusée"_s,
            u"La liste reçue ne porte pas la signature d'Orvane Labs. Rien n'a été modifié."_s};
}

UpdaterText UpdaterTexts::oldFeed()
{
    return {u"Liste des versions refusée"_s,
            u"La liste reçue est plus ancienne que la dernière. Réessaie plus tard."_s};
}

UpdaterText UpdaterTexts::expiredFeed(const QDateTime &expiry)
{
    return {
        u"Liste des versions périmée"_s,
        u"La liste reçue n'est plus valable depuis le %1. L'horloge de cet ordinateur est-elle juste\u202f?"_s
            .arg(dayOf(expiry))};
}

UpdaterText UpdaterTexts::noUpdate(NoUpdate reason, const QString &installed)
{
    UpdaterText upToDate{u"OrvaneBreak est à jour"_s, u"La version %1 est la plus récente."_s.arg(installed)};
    switch (reason) {
    case NoUpdate::SystemTooOld:
        return {
            u"Ton système est trop ancien"_s,
            u"Il existe une version plus récente que la %1, mais elle demande un système plus récent."_s.arg(
                installed)};
    case NoUpdate::OtherSystem:
        return {u"Aucune version pour cet ordinateur"_s,
                u"Aucune version n'est proposée pour ce système. Tu as la version %1."_s.arg(installed)};
    case NoUpdate::EmptyFeed:
        return {u"Aucune version annoncée"_s,
                u"Le serveur n'annonce aucune version pour l'instant. Tu as la version %1."_s.arg(installed)};
    case NoUpdate::FromTheFuture:
        return {
            u"Vérification impossible"_s,
            u"Les versions annoncées portent une date à venir. L'horloge de cet ordinateur retarde-t-elle\u202f?"_s};
    case NoUpdate::Unusable:
        return {u"Mise à jour refusée"_s, u"Une version plus récente que la %1 est annoncée, mais son "
                                          u"annonce est incomplète ou son adresse "
                                          "n'est pas sûre."_s.arg(installed)};
    case NoUpdate::UpToDate:
    case NoUpdate::Skipped:
        break;
    }
    return upToDate;
}

UpdaterText UpdaterTexts::noDownload()
{
    return {
        u"Téléchargement interrompu"_s,
        u"La mise à jour n'a pas pu être téléchargée (réseau ou place sur le disque\u202f?). Rien n'a été modifié."_s};
}

UpdaterText UpdaterTexts::failure(UpdateFailure failure)
{
    switch (failure) {
    case UpdateFailure::NotGenuine:
        return {u"Mise à jour refusée"_s,
                u"Le fichier reçu ne porte pas la signature d'Orvane Labs. Rien n'a été modifié."_s};
    case UpdateFailure::Damaged:
        return {u"Mise à jour refusée"_s,
                u"Le fichier reçu n'est pas la version annoncée. Rien n'a été modifié."_s};
    case UpdateFailure::Disk:
        break;
    }
    return {
        u"Installation impossible"_s,
        u"La mise à jour n'a pas pu être écrite sur le disque. OrvaneBreak continue avec la version actuelle."_s};
}

UpdaterText UpdaterTexts::failedTrial(const QString &failed, const QString &installed)
{
    return {u"Mise à jour annulée"_s,
            u"La version %1 n'a pas démarré\u00a0: OrvaneBreak est revenu à la version %2."_s.arg(failed,
                                                                                                  installed)};
}

UpdaterText UpdaterTexts::staleWarning(const QDateTime &lastSuccess)
{
    return {u"Mises à jour"_s, u"Aucune vérification n'a réussi depuis le %1."_s.arg(dayOf(lastSuccess))};
}
