// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "CheckInClaims.h"
#include "HttpExchange.h"

#include <QJsonObject>
#include <QString>

#include <optional>
#include <vector>

/// What a misbehaviour may need to know.
struct MisbehaviourContext
{
    QString argument;     ///< What was asked for, or the standard argument.
    QString path;         ///< The path of the request.
    QString plainAddress; ///< Where the server listens without TLS: "http://127.0.0.1:PORT".
};

/// One way to answer wrongly. Each function changes one stage of the honest answer, and is null where the
/// stage stays honest: what is claimed (and then signed), the members of the JSON object, the HTTP answer.
struct Misbehaviour
{
    QLatin1StringView name = {};
    QLatin1StringView summary = {};
    QLatin1StringView standardArgument = {}; ///< Empty when it takes no argument.
    bool (*accepts)(const QString &argument) = nullptr;
    void (*changeClaims)(CheckInClaims &claims, const MisbehaviourContext &context) = nullptr;
    void (*changeMembers)(QJsonObject &members, const MisbehaviourContext &context) = nullptr;
    void (*changeAnswer)(HttpAnswer &answer, const MisbehaviourContext &context) = nullptr;
};

/// All of them, in the order in which a person reads about them.
[[nodiscard]] const std::vector<Misbehaviour> &allMisbehaviours();

/// The misbehaviour that a running server applies, kept in one JSON file that it reads at every request.
class MisbehaviourChoice final
{
public:
    /// What stands in the file.
    struct Chosen
    {
        const Misbehaviour *misbehaviour = nullptr; ///< Null for an honest server.
        QString argument;
    };

    explicit MisbehaviourChoice(QString file);

    /// Chooses by name; "none" is the honest server. An empty argument stands for the standard one. Throws
    /// std::runtime_error for an unknown name or an argument that it does not take.
    void choose(const QString &name, const QString &argument) const;

    [[nodiscard]] Chosen chosen() const;

private:
    QString m_file;
};
