// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "CheckInAnswer.h"
#include "Support/FakeHttp.h"
#include "Support/Signer.h"

#include <QString>

#include <optional>
#include <random>

/// The makers' server, behind an unreliable network.
class Makers
{
public:
    struct Answer
    {
        QString kind;
        std::optional<HttpAnswer> http;
        std::optional<ServerMessage> message; ///< The message that the program must accept.
    };

    /// Answers a check-in of a program whose clock shows `theirs` at the true date `now`.
    Answer answerCheckIn(const FakeHttp::Request &request, const Signer &signer, Date now, Date theirs,
                         std::mt19937 &random);

    /// Answers a report and sets `isAccepted`.
    static Answer answerReport(std::mt19937 &random, bool &isAccepted);

    /// Answers the search for an update: there is none.
    static Answer answerFeed(std::mt19937 &random);

    /// How many messages the program has acknowledged.
    [[nodiscard]] qint64 delivered() const { return m_delivered; }

private:
    [[nodiscard]] QJsonObject rightAnswer(const QString &nonce, const Signer &signer, Date date,
                                          std::mt19937 &random);

    std::optional<ServerMessage> m_message; ///< Sent until it is acknowledged.
    qint64 m_lastId = 0;
    qint64 m_delivered = 0;
    QByteArray m_earlierAnswer;
};
