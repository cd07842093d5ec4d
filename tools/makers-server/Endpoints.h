// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Acknowledgements.h"
#include "HttpExchange.h"
#include "Misbehaviour.h"
#include "Outbox.h"
#include "ReceivedLog.h"
#include "SigningKey.h"

#include <QJsonObject>
#include <QString>

class StateFolder;

/// The three endpoints: what is answered to a request.
class Endpoints final
{
public:
    /// Keeps everything in `folder`; makes the signing key where there is none.
    explicit Endpoints(const StateFolder &folder);

    /// Where the server listens without TLS, "http://127.0.0.1:PORT".
    void setPlainAddress(const QString &address);

    /// Records the request and answers it, wrongly if a misbehaviour is chosen. A check-in is given the
    /// message published last, unless its device has acknowledged that message at any time. Unknown paths
    /// are answered with 404, other methods than POST with 405, a request in a wrong form with 400, and a
    /// trouble of the server's own, told on the standard error, with 500; all of them with "ok" false.
    [[nodiscard]] HttpAnswer answer(const HttpRequest &request);

private:
    /// A JSON object and the status that it is answered with.
    struct Draft
    {
        int status = 200;
        QJsonObject members;
    };

    using Chosen = MisbehaviourChoice::Chosen;

    [[nodiscard]] HttpAnswer respond(const HttpRequest &request);
    [[nodiscard]] Draft draft(const HttpRequest &request, const Chosen &chosen,
                              const MisbehaviourContext &context);
    [[nodiscard]] QJsonObject checkInMembers(const QJsonObject &request, const Chosen &chosen,
                                             const MisbehaviourContext &context);
    void acknowledge(const QJsonObject &request);

    SigningKey m_key;
    Outbox m_outbox;
    MisbehaviourChoice m_misbehaviour;
    Acknowledgements m_acknowledgements;
    ReceivedLog m_received;
    QString m_plainAddress;
};
