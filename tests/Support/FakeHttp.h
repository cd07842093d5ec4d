// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Http.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QPointer>
#include <QUrl>

#include <utility>

/// Records the requests; the test answers them.
class FakeHttp final : public Http
{
public:
    enum class Method
    {
        Get,
        Post
    };

    struct Request
    {
        Method method;
        QUrl url;
        QByteArray body;
        std::chrono::milliseconds limit;
        QPointer<QObject> context;
        Completion completion;
        Departure departure;

        [[nodiscard]] QJsonObject json() const { return QJsonDocument::fromJson(body).object(); }
    };

    void get(const QUrl &url, std::chrono::milliseconds limit, QObject &context,
             Completion completion) override
    {
        requests.append({Method::Get, url, {}, limit, &context, std::move(completion), {}});
    }

    void post(const QUrl &url, const QByteArray &body, std::chrono::milliseconds limit, QObject &context,
              Completion completion, Departure departure) override
    {
        if (isConnected && departure && !departure())
            completeWithoutAnswer(context, std::move(completion));
        else
            requests.append(
                {Method::Post, url, body, limit, &context, std::move(completion), std::move(departure)});
    }

    /// Answers the oldest open request.
    void answer(const std::optional<HttpAnswer> &answer)
    {
        const Request request = requests.takeFirst();
        if (request.context)
            request.completion(answer);
    }

    QList<Request> requests;
    bool isConnected = true; ///< Whether requests leave at once.
};
