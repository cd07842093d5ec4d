// SPDX-License-Identifier: GPL-3.0-or-later
#include "LoginItem.h"

#include "MessageFilter.h"

using namespace Qt::StringLiterals;

void LoginItem::logFailure(const QString &reason)
{
    qCInfo(orvaneLog).noquote() << u"OrvaneBreak: ouverture à la connexion: "_s + reason;
}
