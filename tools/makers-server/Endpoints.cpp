// SPDX-License-Identifier: GPL-3.0-or-later
#include "Endpoints.h"

#include "CheckInClaims.h"
#include "RequestForm.h"
#include "StateFolder.h"

#include <QDateTime>
#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>

using namespace Qt::StringLiterals;

namespace {

/// One path that is served.
struct Endpoint
{
    QLatin1StringView path;
    QLatin1StringView kind;
    RequestForm (*form)() = nullptr;
};

constexpr std::array endpoints{
    Endpoint{"/api/check.php"_L1, "check-in"_L1, RequestForm::checkIn},
    Endpoint{"/api/report.php"_L1, "report"_L1, RequestForm::report},
    Endpoint{"/api/crash.php"_L1, "crash"_L1, RequestForm::crash},
};

QJsonObject refusal(const QString &problem)
{
    return {{u"ok"_s, false}, {u"problem"_s, problem}};
}

HttpAnswer jsonAnswer(int status, const QJsonObject &members)
{
    HttpAnswer answer;
    answer.status = status;
    answer.headers.emplaceBack("Content-Type", "application/json");
    answer.body = QJsonDocument(members).toJson(QJsonDocument::Compact);
    return answer;
}

} // namespace

Endpoints::Endpoints(const StateFolder &folder)
    : m_key(SigningKey::keptIn(folder.file(u"signing-key"_s)))
    , m_outbox(folder.file(u"messages.json"_s))
    , m_misbehaviour(folder.file(u"misbehaviour.json"_s))
    , m_acknowledgements(folder.file(u"acknowledgements.json"_s))
    , m_received(folder.file(u"received.jsonl"_s))
{
}

void Endpoints::setPlainAddress(const QString &address)
{
    m_plainAddress = address;
}

HttpAnswer Endpoints::answer(const HttpRequest &request)
{
    try {
        return respond(request);
    } catch (const std::exception &trouble) {
        std::fprintf(stderr, "makers-server: %s\n", trouble.what());
        return jsonAnswer(500, refusal(u"the server is in trouble"_s));
    }
}

HttpAnswer Endpoints::respond(const HttpRequest &request)
{
    // Whoever followed the redirection to this address is answered honestly, or it would have no end.
    const Chosen chosen = request.query == "redirected"_L1 ? Chosen() : m_misbehaviour.chosen();
    const MisbehaviourContext context{chosen.argument, request.path, m_plainAddress};
    Draft content = draft(request, chosen, context);
    if (chosen.misbehaviour != nullptr && chosen.misbehaviour->changeMembers != nullptr)
        chosen.misbehaviour->changeMembers(content.members, context);
    HttpAnswer result = jsonAnswer(content.status, content.members);
    if (chosen.misbehaviour != nullptr && chosen.misbehaviour->changeAnswer != nullptr)
        chosen.misbehaviour->changeAnswer(result, context);
    return result;
}

Endpoints::Draft Endpoints::draft(const HttpRequest &request, const Chosen &chosen,
                                  const MisbehaviourContext &context)
{
    const auto endpoint = std::ranges::find_if(
        endpoints, [&](const Endpoint &candidate) { return candidate.path == request.path; });
    if (endpoint == endpoints.end()) {
        m_received.addRequest(u"other"_s, request, u"unknown path"_s);
        return {404, refusal(u"unknown path"_s)};
    }
    if (request.method != "POST") {
        m_received.addRequest(endpoint->kind, request, u"not POST"_s);
        return {405, refusal(u"not POST"_s)};
    }
    const RequestForm::Reading reading = endpoint->form().read(request.body);
    m_received.addRequest(endpoint->kind, request, reading.problem);
    if (!reading.problem.isEmpty())
        return {400, refusal(reading.problem)};
    if (endpoint->kind == "check-in"_L1)
        return {200, checkInMembers(reading.members, chosen, context)};
    return {200, {{u"ok"_s, true}}};
}

QJsonObject Endpoints::checkInMembers(const QJsonObject &request, const Chosen &chosen,
                                      const MisbehaviourContext &context)
{
    acknowledge(request);
    CheckInClaims claims;
    claims.nonce = request["n"_L1].toString();
    claims.time = QDateTime::currentSecsSinceEpoch();
    const std::optional<Message> newest = m_outbox.newest();
    if (newest && !m_acknowledgements.contains(request["d"_L1].toString(), newest->id)) {
        claims.id = newest->id;
        claims.text = newest->text;
    }
    if (chosen.misbehaviour != nullptr && chosen.misbehaviour->changeClaims != nullptr)
        chosen.misbehaviour->changeClaims(claims, context);
    return claims.signedMembers(m_key);
}

void Endpoints::acknowledge(const QJsonObject &request)
{
    const QString device = request["d"_L1].toString();
    if (request.contains("m"_L1) && m_acknowledgements.add(device, request["m"_L1].toInteger()))
        m_received.addAcknowledgement(device, request["m"_L1].toInteger());
}
