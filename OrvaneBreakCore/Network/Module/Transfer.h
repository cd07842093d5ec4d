// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QObject>
#include <QUrl>

#include <curl/curl.h>

#include <functional>
#include <memory>
#include <optional>

class TransferLoop;

/// One request to a server and its answer, through libcurl: on a connection of its own, never sent twice,
/// with certificates checked, and without cookies, stored passwords or a name of the program. Redirects are
/// followed, five at most, to addresses that Http::isAllowed and never from HTTPS to HTTP. 307 and 308 send
/// the body again, the others turn a POST into a GET. Proxies are those of the environment (https_proxy)
/// for HTTPS, and none for HTTP. User-interface thread only.
class Transfer final : public QObject
{
public:
    struct Request
    {
        QUrl url;
        /// Sent by POST; without a body the request is a GET.
        std::optional<QByteArray> body;
        /// The first wanted byte of the file; 0 asks for all of it.
        qint64 offset = 0;
        /// As Http::Departure; may be empty.
        std::function<bool()> departure;
    };

    enum class End
    {
        Complete, ///< The whole answer arrived.
        Broken,   ///< No connection, or an answer that ended early, is no HTTP, or wastes bytes.
        Refused   ///< A redirect to somewhere unsafe, or one too many.
    };

    /// Called from the event loop. Either may destroy the transfer.
    struct Receiver
    {
        /// The next bytes of the answer's body, as they were sent, never none. The status is known.
        std::function<void(const QByteArray &bytes)> onData;
        /// Once, and nothing after it.
        std::function<void(End end)> onEnd;
    };

    /// Sends `request`, whose address is allowed. Destroying the transfer ends it; the loop outlives it.
    Transfer(TransferLoop &loop, Request request, Receiver receiver);
    ~Transfer() override;

    /// The status of the answer, or 0 before there is one.
    [[nodiscard]] int status() const;

    /// The value of a header of the answer, or nothing.
    [[nodiscard]] QByteArray header(const char *name) const;

    // For the loop.
    [[nodiscard]] CURL *easy() const { return m_easy.get(); }
    void onSocket(curl_socket_t socket, bool isWatched);
    void onProgress();
    void onDone(CURLcode result);

private:
    template <void (*release)(CURL *)>
    struct Release
    {
        void operator()(CURL *easy) const { release(easy); }
    };

    static int depart(void *self, char *, char *, int, int);
    static size_t takeHeader(const char *data, size_t size, size_t count, void *self);
    static size_t takeBody(const char *data, size_t size, size_t count, void *self);

    void prepare();
    void aim(const QUrl &url, bool isPost);
    void follow();
    void end(End end);
    [[nodiscard]] bool isRedirect() const;
    [[nodiscard]] bool wastesBytes() const;

    TransferLoop &m_loop;
    Request m_request;
    std::shared_ptr<const Receiver> m_receiver;
    std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> m_headers;
    std::unique_ptr<CURL, Release<curl_easy_cleanup>> m_easy;
    QByteArray m_pending;
    curl_socket_t m_socket = CURL_SOCKET_BAD;
    qint64 m_headSize = 0;
    qint64 m_bodySize = 0;
    int m_redirects = 0;
    bool m_isHeadWhole = false;
};
