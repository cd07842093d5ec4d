// SPDX-License-Identifier: GPL-3.0-or-later
#include "Misbehaviour.h"

#include "JsonFile.h"
#include "SigningKey.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QUuid>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using Context = MisbehaviourContext;

// Far deeper than a parser that recurses survives.
constexpr int bombDepth = 100'000;

std::chrono::milliseconds seconds(const QString &argument)
{
    return std::chrono::milliseconds(static_cast<qint64>(argument.toDouble() * 1000));
}

bool isDuration(const QString &argument)
{
    bool isNumber = false;
    const double value = argument.toDouble(&isNumber);
    return isNumber && value > 0 && value < 86400;
}

bool isWholeSeconds(const QString &argument)
{
    bool isNumber = false;
    return argument.toLongLong(&isNumber) > 0 && isNumber;
}

/// Every member that an answer has, with a value of another type.
QJsonObject wrongValues(const QJsonObject &members)
{
    return {{u"n"_s, 7},
            {u"ts"_s, QString::number(members["ts"_L1].toInteger())},
            {u"mid"_s, QString::number(members["mid"_L1].toInteger())},
            {u"msg"_s, QJsonArray{members["msg"_L1]}},
            {u"sig"_s, QJsonValue::Null},
            {u"ok"_s, u"true"_s}};
}

void giveWrongType(QJsonObject &members, const Context &context)
{
    if (members.contains(context.argument))
        members[context.argument] = wrongValues(members)[context.argument];
}

void signWithAnotherKey(QJsonObject &members, const Context &)
{
    if (members.contains("sig"_L1))
        members = CheckInClaims::fromMembers(members).signedMembers(SigningKey::generated());
}

/// Puts `literal` in the place of the value of a member; no member of that name changes nothing. The member
/// is one whose value has neither a comma nor a bracket in it.
void replaceValue(QByteArray &body, const QByteArray &member, const QByteArray &literal)
{
    const QByteArray start = '"' + member + "\":";
    const qsizetype at = body.indexOf(start);
    if (at < 0)
        return;
    qsizetype end = at + start.size();
    while (end < body.size() && body[end] != ',' && body[end] != '}')
        ++end;
    body.replace(at + start.size(), end - at - start.size(), literal);
}

void addMembers(QByteArray &body, const QByteArray &members)
{
    body.insert(body.size() - 1, ',' + members);
}

void redirect(HttpAnswer &answer, const QString &address)
{
    // 307 keeps the method and the body: a client that follows gets an answer that it can believe.
    answer.status = 307;
    answer.headers.emplaceBack("Location", address.toUtf8());
}

// Function-like macros would hide the stages; the designated names show them.
const std::vector<Misbehaviour> table{
    {.name = "late"_L1,
     .summary = "answers after N seconds of silence"_L1,
     .standardArgument = "30"_L1,
     .accepts = isDuration,
     .changeAnswer = [](HttpAnswer &answer,
                        const Context &context) { answer.delay = seconds(context.argument); }},
    {.name = "truncated"_L1,
     .summary = "a whole answer whose JSON ends in the middle"_L1,
     .changeAnswer = [](HttpAnswer &answer,
                        const Context &) { answer.body.truncate(answer.body.size() / 2); }},
    {.name = "wrong-nonce"_L1,
     .summary = "properly signed for another request"_L1,
     .changeClaims =
         [](CheckInClaims &claims, const Context &) {
             claims.nonce = QUuid::createUuid().toString(QUuid::Id128).toUpper();
         }},
    {.name = "wrong-key"_L1,
     .summary = "properly signed by somebody else"_L1,
     .changeMembers = signWithAnotherKey},
    {.name = "old-clock"_L1,
     .summary = "the clock of the server is N seconds behind"_L1,
     .standardArgument = "600"_L1,
     .accepts = isWholeSeconds,
     .changeClaims = [](CheckInClaims &claims,
                        const Context &context) { claims.time -= context.argument.toLongLong(); }},
    {.name = "future-clock"_L1,
     .summary = "the clock of the server is N seconds ahead"_L1,
     .standardArgument = "660"_L1,
     .accepts = isWholeSeconds,
     .changeClaims = [](CheckInClaims &claims,
                        const Context &context) { claims.time += context.argument.toLongLong(); }},
    {.name = "wrong-types"_L1,
     .summary = "the member named (n, ts, mid, msg, sig or ok) has a value of another type"_L1,
     .standardArgument = "mid"_L1,
     .accepts = [](const QString &argument) { return wrongValues({}).contains(argument); },
     .changeMembers = giveWrongType},
    {.name = "without"_L1,
     .summary = "the member named (n, ts, mid, msg, sig or ok) is missing"_L1,
     .standardArgument = "sig"_L1,
     .accepts = [](const QString &argument) { return wrongValues({}).contains(argument); },
     .changeMembers = [](QJsonObject &members, const Context &context) { members.remove(context.argument); }},
    {.name = "zero-id"_L1,
     .summary = "a signed text with the id 0"_L1,
     .changeClaims = [](CheckInClaims &claims, const Context &) { claims.id = 0; }},
    {.name = "empty-message"_L1,
     .summary = "a signed id with an empty text"_L1,
     .changeClaims = [](CheckInClaims &claims, const Context &) { claims.text.clear(); }},
    {.name = "500-ok-true"_L1,
     .summary = "status 500, everything else as it should be"_L1,
     .changeAnswer = [](HttpAnswer &answer, const Context &) { answer.status = 500; }},
    {.name = "200-ok-false"_L1,
     .summary = "status 200 with \"ok\" false"_L1,
     .changeMembers = [](QJsonObject &members, const Context &) { members["ok"_L1] = false; }},
    {.name = "no-ok"_L1,
     .summary = "status 200 without \"ok\""_L1,
     .changeMembers = [](QJsonObject &members, const Context &) { members.remove("ok"_L1); }},
    {.name = "not-json"_L1,
     .summary = "a page in HTML"_L1,
     .changeAnswer = [](HttpAnswer &answer,
                        const Context &) { answer.body = "<!doctype html><title>ok</title>\n"; }},
    {.name = "redirect-http"_L1,
     .summary = "redirects to the same path without TLS, where the answer is honest"_L1,
     .changeAnswer =
         [](HttpAnswer &answer, const Context &context) {
             redirect(answer, context.plainAddress + context.path + u"?redirected"_s);
         }},
    {.name = "redirect-loop"_L1,
     .summary = "redirects to the same address for ever"_L1,
     .changeAnswer = [](HttpAnswer &answer, const Context &context) { redirect(answer, context.path); }},
    {.name = "slow-drip"_L1,
     .summary = "an honest answer, one byte every N seconds"_L1,
     .standardArgument = "1"_L1,
     .accepts = isDuration,
     .changeAnswer =
         [](HttpAnswer &answer, const Context &context) {
             answer.delivery = DeliveryKind::Drip;
             answer.pause = seconds(context.argument);
         }},
    {.name = "endless-body"_L1,
     .summary = "an honest answer, then spaces without an end"_L1,
     .changeAnswer = [](HttpAnswer &answer, const Context &) { answer.delivery = DeliveryKind::WithoutEnd; }},
    {.name = "close-in-answer"_L1,
     .summary = "closes the connection after half of the announced body"_L1,
     .changeAnswer = [](HttpAnswer &answer,
                        const Context &) { answer.delivery = DeliveryKind::CloseHalfway; }},
    {.name = "duplicate-members"_L1,
     .summary = "every member again, with values that nobody signed"_L1,
     .changeAnswer =
         [](HttpAnswer &answer, const Context &) {
             addMembers(answer.body, R"("mid":8,"msg":"Personne n'a signé ceci","ok":false)");
         }},
    {.name = "trailing-bytes"_L1,
     .summary = "a second object after the first"_L1,
     .changeAnswer = [](HttpAnswer &answer, const Context &) { answer.body += R"({"mid":8})"; }},
    {.name = "deep"_L1,
     .summary = "one more member, an array 100,000 levels deep"_L1,
     .changeAnswer =
         [](HttpAnswer &answer, const Context &) {
             addMembers(answer.body, "\"deep\":" + QByteArray(bombDepth, '[') + QByteArray(bombDepth, ']'));
         }},
    {.name = "huge-number"_L1,
     .summary = "id 2^64 + 7, signed as what is left of it in 64 bits"_L1,
     .changeClaims = [](CheckInClaims &claims, const Context &) { claims.id = 7; },
     .changeAnswer = [](HttpAnswer &answer,
                        const Context &) { replaceValue(answer.body, "mid", "18446744073709551623"); }},
    {.name = "boolean-id"_L1,
     .summary = "id true, signed as 1"_L1,
     .changeClaims = [](CheckInClaims &claims, const Context &) { claims.id = 1; },
     .changeAnswer = [](HttpAnswer &answer, const Context &) { replaceValue(answer.body, "mid", "true"); }},
    {.name = "float-id"_L1,
     .summary = "the id as written in the argument, signed as 1000"_L1,
     .standardArgument = "1000.0"_L1,
     .accepts = [](const QString &argument) { return !argument.isEmpty(); },
     .changeClaims = [](CheckInClaims &claims, const Context &) { claims.id = 1000; },
     .changeAnswer =
         [](HttpAnswer &answer, const Context &context) {
             replaceValue(answer.body, "mid", context.argument.toUtf8());
         }},
    {.name = "nul-in-message"_L1,
     .summary = "a signed text with a NUL in it"_L1,
     .changeClaims = [](CheckInClaims &claims,
                        const Context &) { claims.text = u"Avant"_s + QChar(u'\0') + u"après"_s; }},
    {.name = "lone-surrogate"_L1,
     .summary = "half of a character escaped in the text, signed as it is read by many"_L1,
     .changeClaims = [](CheckInClaims &claims,
                        const Context &) { claims.text = QString::fromUtf8("\xef\xbf\xbd"); },
     .changeAnswer = [](HttpAnswer &answer,
                        const Context &) { replaceValue(answer.body, "msg", R"("\ud800")"); }},
    {.name = "invalid-utf8"_L1,
     .summary = "a text that is not UTF-8, signed as it is read by many"_L1,
     .changeClaims = [](CheckInClaims &claims,
                        const Context &) { claims.text = QString::fromUtf8("\xef\xbf\xbd"); },
     .changeAnswer = [](HttpAnswer &answer,
                        const Context &) { replaceValue(answer.body, "msg", "\"\xff\""); }},
};

} // namespace

const std::vector<Misbehaviour> &allMisbehaviours()
{
    return table;
}

MisbehaviourChoice::MisbehaviourChoice(QString file)
    : m_file(std::move(file))
{
}

void MisbehaviourChoice::choose(const QString &name, const QString &argument) const
{
    if (name == "none"_L1) {
        writeJsonFile(m_file, QJsonDocument(QJsonObject{{u"name"_s, name}}));
        return;
    }
    const auto found =
        std::ranges::find_if(table, [&](const Misbehaviour &candidate) { return candidate.name == name; });
    if (found == table.end())
        throw std::runtime_error((u"unknown misbehaviour: "_s + name).toStdString());
    const QString used = argument.isEmpty() ? QString(found->standardArgument) : argument;
    if (found->accepts == nullptr ? !used.isEmpty() : !found->accepts(used))
        throw std::runtime_error((name + u" does not take the argument "_s + used).toStdString());
    writeJsonFile(m_file, QJsonDocument(QJsonObject{{u"name"_s, name}, {u"argument"_s, used}}));
}

MisbehaviourChoice::Chosen MisbehaviourChoice::chosen() const
{
    const QJsonObject content = readJsonFile(m_file).object();
    const QString name = content["name"_L1].toString();
    const auto found =
        std::ranges::find_if(table, [&](const Misbehaviour &candidate) { return candidate.name == name; });
    return {found == table.end() ? nullptr : &*found, content["argument"_L1].toString()};
}
