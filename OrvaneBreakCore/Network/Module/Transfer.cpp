// SPDX-License-Identifier: GPL-3.0-or-later
#include "Transfer.h"

#include "Certificates.h"
#include "Http.h"
#include "TransferLoop.h"

#include <QPointer>

#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maxHeadSize = 65'536;
constexpr qint64 maxWaste = 1'048'576;
constexpr qsizetype maxPieceSize = 65'536;
constexpr int maxRedirects = 5;
constexpr std::array redirectStatuses{301, 302, 303, 307, 308};
constexpr std::array redirectsThatKeepTheBody{307, 308};

} // namespace

Transfer::Transfer(TransferLoop &loop, Request request, Receiver receiver)
    : m_loop(loop)
    , m_request(std::move(request))
    , m_receiver(std::make_shared<const Receiver>(std::move(receiver)))
    // Libcurl would ask the server first whether it takes a large body, and wait for the answer.
    , m_headers(curl_slist_append(nullptr, "Expect:"), &curl_slist_free_all)
    , m_easy(curl_easy_init())
{
    prepare();
    aim(m_request.url, m_request.body.has_value());
    m_loop.start(*this);
}

Transfer::~Transfer()
{
    m_loop.stop(*this);
}

void Transfer::prepare()
{
    CURL *easy = m_easy.get();
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "https,http");
    // A reused connection may have died, and then libcurl would send the request again.
    curl_easy_setopt(easy, CURLOPT_FRESH_CONNECT, 1L);
    curl_easy_setopt(easy, CURLOPT_FORBID_REUSE, 1L);
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    // A lookup of a name cannot be stopped, and waiting for it would block the user interface.
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, m_headers.get());
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, &Transfer::depart);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &Transfer::takeHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Transfer::takeBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    if (m_request.offset > 0)
        curl_easy_setopt(easy, CURLOPT_RANGE, (QByteArray::number(m_request.offset) + '-').constData());
    Certificates::use(easy);
}

void Transfer::aim(const QUrl &url, bool isPost)
{
    CURL *easy = m_easy.get();
    m_request.url = url;
    curl_easy_setopt(easy, CURLOPT_URL, url.toEncoded(QUrl::RemoveFragment).constData());
    // HTTP without TLS is for this machine alone.
    curl_easy_setopt(easy, CURLOPT_PROXY, url.scheme() == "http"_L1 ? "" : nullptr);
    if (isPost) {
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_request.body->size()));
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, m_request.body->constData());
    } else {
        curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
    }
}

int Transfer::status() const
{
    long status = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_RESPONSE_CODE, &status);
    return static_cast<int>(status);
}

QByteArray Transfer::header(const char *name) const
{
    curl_header *found = nullptr;
    if (curl_easy_header(m_easy.get(), name, 0, CURLH_HEADER, -1, &found) != CURLHE_OK)
        return {};
    return found->value;
}

bool Transfer::isRedirect() const
{
    return std::ranges::find(redirectStatuses, status()) != redirectStatuses.end() &&
           !header("Location").isEmpty();
}

int Transfer::depart(void *self, char * /*address*/, char * /*ownAddress*/, int /*port*/, int /*ownPort*/)
{
    const auto &departure = static_cast<Transfer *>(self)->m_request.departure;
    return !departure || departure() ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

size_t Transfer::takeHeader(const char *data, size_t size, size_t count, void *self)
{
    // Also counts interim answers, of which there may be any number.
    auto &transfer = *static_cast<Transfer *>(self);
    transfer.m_headSize += static_cast<qint64>(size * count);
    // Libcurl takes a head that is cut off for a whole one. Trailers come after it.
    const QByteArrayView line(data, static_cast<qsizetype>(size * count));
    if (line.startsWith("HTTP/"))
        transfer.m_isHeadWhole = false;
    else if (line.trimmed().isEmpty())
        transfer.m_isHeadWhole = true;
    return transfer.m_headSize <= maxHeadSize ? size * count : 0;
}

size_t Transfer::takeBody(const char *data, size_t size, size_t count, void *self)
{
    // A receiver may destroy the transfer, which libcurl forbids here.
    auto &transfer = *static_cast<Transfer *>(self);
    const auto length = static_cast<qsizetype>(size * count);
    transfer.m_bodySize += length;
    if (!transfer.isRedirect())
        transfer.m_pending.append(data, length);
    else if (transfer.m_bodySize > maxWaste)
        return 0;
    return size * count;
}

void Transfer::onSocket(curl_socket_t socket, bool isWatched)
{
    if (isWatched)
        m_socket = socket;
    else if (m_socket == socket)
        m_socket = CURL_SOCKET_BAD;
}

void Transfer::onProgress()
{
    const QPointer self(this);
    const auto receiver = m_receiver;
    const QByteArray pending = std::exchange(m_pending, {});
    for (qsizetype begin = 0; self && m_receiver && begin < pending.size(); begin += maxPieceSize)
        receiver->onData(pending.mid(begin, maxPieceSize));
    if (self && m_receiver && wastesBytes())
        end(End::Broken);
}

bool Transfer::wastesBytes() const
{
    // Libcurl skips what belongs to no header and no body, such as extensions of chunks, without a limit.
    tcp_info info = {};
    socklen_t size = sizeof info;
    if (m_socket == CURL_SOCKET_BAD || getsockopt(m_socket, IPPROTO_TCP, TCP_INFO, &info, &size) != 0)
        return false;
    return static_cast<qint64>(info.tcpi_bytes_received) > m_bodySize + m_bodySize / 8 + maxWaste;
}

void Transfer::onDone(CURLcode result)
{
    if (result != CURLE_OK || !m_isHeadWhole)
        end(End::Broken);
    else if (isRedirect())
        follow();
    else
        end(End::Complete);
}

void Transfer::follow()
{
    const char *target = nullptr;
    curl_easy_getinfo(m_easy.get(), CURLINFO_REDIRECT_URL, &target);
    const QUrl url = QUrl::fromEncoded(target);
    const bool isDowngrade = m_request.url.scheme() == "https"_L1 && url.scheme() != "https"_L1;
    if (++m_redirects > maxRedirects || isDowngrade || !Http::isAllowed(url)) {
        end(End::Refused);
        return;
    }
    const bool keepsBody =
        std::ranges::find(redirectsThatKeepTheBody, status()) != redirectsThatKeepTheBody.end();
    m_loop.stop(*this);
    m_headSize = 0;
    m_bodySize = 0;
    if (!keepsBody)
        m_request.body.reset();
    aim(url, m_request.body.has_value());
    m_loop.start(*this);
}

void Transfer::end(End end)
{
    m_loop.stop(*this);
    const auto receiver = std::exchange(m_receiver, nullptr);
    receiver->onEnd(end);
}
