// SPDX-License-Identifier: GPL-3.0-or-later
#include "RequestForm.h"

#include <QJsonDocument>
#include <QJsonParseError>
#include <QRegularExpression>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

bool isText(const QJsonValue &value)
{
    return value.isString();
}

bool isFilledText(const QJsonValue &value)
{
    return !value.toString().isEmpty();
}

bool isNonce(const QJsonValue &value)
{
    static const QRegularExpression form(uR"(\A[0-9A-F]{32}\z)"_s);
    return form.match(value.toString()).hasMatch();
}

bool isMessageId(const QJsonValue &value)
{
    return value.isDouble() && value.toInteger() >= 1;
}

bool isDirect(const QJsonValue &value)
{
    return value.toString() == "direct"_L1;
}

bool isCrashKind(const QJsonValue &value)
{
    return value.toString() == "crash"_L1 || value.toString() == "error"_L1;
}

} // namespace

RequestForm::RequestForm(std::vector<Member> members)
    : m_members(std::move(members))
{
}

RequestForm RequestForm::checkIn()
{
    return RequestForm({{"n"_L1, isNonce},
                        {"d"_L1, isText},
                        {"v"_L1, isText},
                        {"os"_L1, isText},
                        {"c"_L1, isDirect},
                        {"m"_L1, isMessageId, true}});
}

RequestForm RequestForm::report()
{
    return RequestForm({{"d"_L1, isText},
                        {"v"_L1, isText},
                        {"os"_L1, isText},
                        {"text"_L1, isText},
                        {"email"_L1, isFilledText, true}});
}

RequestForm RequestForm::crash()
{
    return RequestForm({{"d"_L1, isText},
                        {"kind"_L1, isCrashKind},
                        {"message"_L1, isText},
                        {"stack"_L1, isText},
                        {"v"_L1, isText},
                        {"os"_L1, isText}});
}

RequestForm::Reading RequestForm::read(const QByteArray &body) const
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError)
        return {{}, u"not JSON: "_s + error.errorString()};
    if (!document.isObject())
        return {{}, u"not a JSON object"_s};
    return {document.object(), problemIn(document.object())};
}

QString RequestForm::problemIn(const QJsonObject &members) const
{
    for (const Member &member : m_members) {
        const bool isThere = members.contains(member.name);
        if (!isThere && !member.isOptional)
            return u"member \"%1\" is missing"_s.arg(member.name);
        if (isThere && !member.isRight(members[member.name]))
            return u"member \"%1\" has a wrong value"_s.arg(member.name);
    }
    const QStringList names = members.keys();
    for (const QString &name : names) {
        const bool isKnown =
            std::ranges::any_of(m_members, [&](const Member &member) { return member.name == name; });
        if (!isKnown)
            return u"member \"%1\" is unknown"_s.arg(name);
    }
    return {};
}
