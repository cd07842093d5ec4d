// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>

#include <curl/curl.h>

#include <memory>
#include <unordered_map>

class QSocketNotifier;
class Transfer;

/// Runs the transfers of libcurl in the event loop, without a thread of its own. Libcurl looks up names in
/// threads that nothing waits for. User-interface thread only.
class TransferLoop final : public QObject
{
public:
    TransferLoop();
    ~TransferLoop() override;

    /// Starts `transfer`, whose onProgress() and onDone() are then called from the event loop.
    void start(Transfer &transfer);

    /// Stops `transfer` and closes its connection. Does nothing if it is not running.
    void stop(Transfer &transfer);

private:
    struct Watch
    {
        std::unique_ptr<QSocketNotifier> read;
        std::unique_ptr<QSocketNotifier> write;
    };

    static int watchSocket(CURL *easy, curl_socket_t socket, int what, void *self, void *);
    static int setTimer(CURLM *multi, long milliseconds, void *self);

    void act(curl_socket_t socket, int events);
    void tell();
    [[nodiscard]] std::unique_ptr<QSocketNotifier> notifier(curl_socket_t socket, bool isWrite);

    std::unordered_map<curl_socket_t, Watch> m_watches;
    std::unordered_map<CURL *, Transfer *> m_transfers;
    QTimer m_timer;
    CURLM *m_multi;
};
