// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Network/Http.h"

#include <QHostAddress>
#include <QUrl>

using namespace Qt::StringLiterals;

bool Http::isAllowed(const QUrl &url)
{
    if (!url.isValid() || url.host().isEmpty() || !url.userInfo().isEmpty())
        return false;
    if (url.scheme() == "https"_L1)
        return true;
    // The name "localhost" is looked up, and the answer may be any address.
    return url.scheme() == "http"_L1 && QHostAddress(url.host()).isLoopback();
}
