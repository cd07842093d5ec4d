// SPDX-License-Identifier: GPL-3.0-or-later
#include "TransferLoop.h"

#include "Transfer.h"

#include <QPointer>
#include <QSocketNotifier>

#include <vector>

namespace {

/// Libcurl calls back while a notifier is telling of an event, so the notifier is not deleted at once.
void retire(std::unique_ptr<QSocketNotifier> notifier)
{
    if (!notifier)
        return;
    notifier->setEnabled(false);
    notifier.release()->deleteLater();
}

} // namespace

TransferLoop::TransferLoop()
{
    [[maybe_unused]] static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    m_multi = curl_multi_init();
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETFUNCTION, &TransferLoop::watchSocket);
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERFUNCTION, &TransferLoop::setTimer);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERDATA, this);
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] { act(CURL_SOCKET_TIMEOUT, 0); });
}

TransferLoop::~TransferLoop()
{
    while (!m_transfers.empty())
        stop(*m_transfers.begin()->second);
    curl_multi_cleanup(m_multi);
}

void TransferLoop::start(Transfer &transfer)
{
    m_transfers.emplace(transfer.easy(), &transfer);
    curl_multi_add_handle(m_multi, transfer.easy());
}

void TransferLoop::stop(Transfer &transfer)
{
    if (m_transfers.erase(transfer.easy()) > 0)
        curl_multi_remove_handle(m_multi, transfer.easy());
}

int TransferLoop::watchSocket(CURL *easy, curl_socket_t socket, int what, void *self, void * /*unused*/)
{
    auto &loop = *static_cast<TransferLoop *>(self);
    if (const auto found = loop.m_transfers.find(easy); found != loop.m_transfers.end())
        found->second->onSocket(socket, what != CURL_POLL_REMOVE);
    Watch &watch = loop.m_watches[socket];
    const auto update = [&](std::unique_ptr<QSocketNotifier> &notifier, bool isWanted, bool isWrite) {
        if (!isWanted)
            retire(std::move(notifier));
        else if (!notifier)
            notifier = loop.notifier(socket, isWrite);
    };
    update(watch.read, what == CURL_POLL_IN || what == CURL_POLL_INOUT, false);
    update(watch.write, what == CURL_POLL_OUT || what == CURL_POLL_INOUT, true);
    if (what == CURL_POLL_REMOVE)
        loop.m_watches.erase(socket);
    return 0;
}

int TransferLoop::setTimer(CURLM * /*multi*/, long milliseconds, void *self)
{
    QTimer &timer = static_cast<TransferLoop *>(self)->m_timer;
    if (milliseconds < 0)
        timer.stop();
    else
        timer.start(std::chrono::milliseconds(milliseconds));
    return 0;
}

std::unique_ptr<QSocketNotifier> TransferLoop::notifier(curl_socket_t socket, bool isWrite)
{
    auto notifier =
        std::make_unique<QSocketNotifier>(socket, isWrite ? QSocketNotifier::Write : QSocketNotifier::Read);
    const int events = isWrite ? CURL_CSELECT_OUT : CURL_CSELECT_IN;
    connect(notifier.get(), &QSocketNotifier::activated, this,
            [this, socket, events] { act(socket, events); });
    return notifier;
}

void TransferLoop::act(curl_socket_t socket, int events)
{
    int running = 0;
    curl_multi_socket_action(m_multi, socket, events, &running);
    tell();
}

void TransferLoop::tell()
{
    // What a transfer tells may destroy any transfer, and this.
    std::vector<QPointer<Transfer>> transfers;
    for (const auto &[easy, transfer] : m_transfers)
        transfers.emplace_back(transfer);
    std::vector<std::pair<QPointer<Transfer>, CURLcode>> done;
    int remaining = 0;
    while (const CURLMsg *message = curl_multi_info_read(m_multi, &remaining))
        done.emplace_back(m_transfers.at(message->easy_handle), message->data.result);
    for (const auto &transfer : transfers) {
        if (transfer)
            transfer->onProgress();
    }
    for (const auto &[transfer, result] : done) {
        if (transfer)
            transfer->onDone(result);
    }
}
