// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Downloads.h"

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <utility>

/// Records the requests; the test plays the server for the latest one.
class FakeDownloads final : public Downloads
{
public:
    struct Request
    {
        QUrl url;
        qint64 offset = 0;
        Receiver receiver;
        std::weak_ptr<void> exchange;

        [[nodiscard]] bool isOpen() const { return !exchange.expired(); }
    };

    [[nodiscard]] std::unique_ptr<Exchange> get(const QUrl &url, qint64 offset, Receiver receiver) override
    {
        auto exchange = std::make_unique<FakeExchange>();
        requests.append({url, offset, std::move(receiver), exchange->life});
        return exchange;
    }

    /// Like the functions below, does nothing once the exchange is destroyed.
    void begin(qint64 offset) const { call(&Receiver::onBegin, offset); }
    void send(const QByteArray &bytes) const { call(&Receiver::onData, bytes); }
    void end(End end) const { call(&Receiver::onEnd, end); }

    /// Plays a complete answer from the requested offset.
    void answer(const QByteArray &bytes, End how) const
    {
        begin(requests.constLast().offset);
        if (!bytes.isEmpty())
            send(bytes);
        end(how);
    }

    QList<Request> requests;

private:
    struct FakeExchange final : public Exchange
    {
        std::shared_ptr<int> life = std::make_shared<int>();
    };

    template <typename Callback, typename Argument>
    void call(Callback callback, const Argument &argument) const
    {
        const Request request = requests.constLast();
        if (request.isOpen())
            (request.receiver.*callback)(argument);
    }
};
