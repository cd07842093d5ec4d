// SPDX-License-Identifier: GPL-3.0-or-later
#include "Http.h"

#include <QObject>
#include <QUrl>

#include <arpa/inet.h>
#include <netinet/in.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Whether `host` is a loopback address. The name "localhost" is not one: it is looked up, and the result may
/// be any address.
bool isLoopback(const QString &host)
{
    const QByteArray text = host.toLatin1();
    in_addr ipv4 = {};
    if (inet_pton(AF_INET, text.constData(), &ipv4) == 1)
        return ntohl(ipv4.s_addr) >> IN_CLASSA_NSHIFT == IN_LOOPBACKNET;
    in6_addr ipv6 = {};
    return inet_pton(AF_INET6, text.constData(), &ipv6) == 1 && IN6_IS_ADDR_LOOPBACK(&ipv6);
}

} // namespace

bool Http::isAllowed(const QUrl &url)
{
    if (!url.isValid() || url.host().isEmpty() || !url.userInfo().isEmpty())
        return false;
    return url.scheme() == "https"_L1 || (url.scheme() == "http"_L1 && isLoopback(url.host()));
}

void Http::completeWithoutAnswer(QObject &context, Completion completion)
{
    QMetaObject::invokeMethod(
        &context, [completion = std::move(completion)] { completion(std::nullopt); }, Qt::QueuedConnection);
}
