// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <vector>

/// The form that the requests to one endpoint have: a JSON object with these members and no others.
class RequestForm final
{
public:
    /// A member whose value is right when `isRight` says so.
    struct Member
    {
        QLatin1StringView name;
        bool (*isRight)(const QJsonValue &value) = nullptr;
        bool isOptional = false;
    };

    /// The members of a request, or what is wrong with it.
    struct Reading
    {
        QJsonObject members;
        QString problem; ///< Empty when the request is right.
    };

    explicit RequestForm(std::vector<Member> members);

    [[nodiscard]] static RequestForm checkIn();
    [[nodiscard]] static RequestForm report();
    [[nodiscard]] static RequestForm crash();

    /// Reads the body of a request. The first thing that is wrong is told.
    [[nodiscard]] Reading read(const QByteArray &body) const;

private:
    [[nodiscard]] QString problemIn(const QJsonObject &members) const;

    std::vector<Member> m_members;
};
