// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdaterTexts.h"

using namespace Qt::StringLiterals;

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
        return {upToDate.message,
                u"Aucune version n'est proposée pour ce système. Tu as la version %1."_s.arg(installed)};
    case NoUpdate::EmptyFeed:
    case NoUpdate::FromTheFuture:
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
                u"Le fichier reçu ne porte pas la signature de Orvane Labs. Rien n'a été modifié."_s};
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

QString UpdaterTexts::staleWarning(const QDateTime &lastSuccess)
{
    return u"Aucune vérification n'a réussi depuis le %1."_s.arg(
        lastSuccess.toLocalTime().date().toString(u"dd.MM.yyyy"_s));
}
