// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Downloads.h"

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <utility>

/// Keeps the exchanges, and lets the test say what the server sends in the latest one.
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

    /// Does nothing, as the other functions, once the exchange was destroyed.
    void begin(qint64 offset) const
    {
        const Request request = requests.constLast();
        if (request.isOpen())
            request.receiver.onBegin(offset);
    }

    void send(const QByteArray &bytes) const
    {
        const Request request = requests.constLast();
        if (request.isOpen())
            request.receiver.onData(bytes);
    }

    void end(End end) const
    {
        const Request request = requests.constLast();
        if (request.isOpen())
            request.receiver.onEnd(end);
    }

    /// A whole exchange from where it was asked for.
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
};
