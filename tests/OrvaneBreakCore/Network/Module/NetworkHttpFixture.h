// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "NetworkHttp.h"
#include "Support/ScriptedServer.h"

#include <QTest>

#include <chrono>
#include <memory>
#include <optional>

/// A request to a server of this machine: a POST or a GET, as the global row "isPost" says.
struct NetworkHttpFixture
{
    void send(std::chrono::milliseconds limit = std::chrono::seconds(20)) { sendTo(server.url(), limit); }

    void sendTo(const QUrl &url, std::chrono::milliseconds limit = std::chrono::seconds(20))
    {
        const auto complete = [this](const std::optional<HttpAnswer> &result) {
            ++completions;
            answer = result;
        };
        if (isPost())
            http.post(url, R"({"a":1})", limit, *context, complete);
        else
            http.get(url, limit, *context, complete);
    }

    static bool isPost()
    {
        QFETCH_GLOBAL(bool, isPost);
        return isPost;
    }

    [[nodiscard]] bool isAnswered() const { return completions == 1; }

    ScriptedServer server;
    NetworkHttp http;
    std::unique_ptr<QObject> context = std::make_unique<QObject>();
    std::optional<HttpAnswer> answer;
    int completions = 0;
};
