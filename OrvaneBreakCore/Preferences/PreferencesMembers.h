// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QList>
#include <QString>

#include <optional>

/// The members of one JSON object, in their order and with the exact text of every member that this program
/// does not change: numbers of any size and form, spaces and escapes stay as another program wrote them.
class PreferencesMembers
{
public:
    /// The members of the object in `json`; absent unless that is one JSON object in UTF-8, with or without a
    /// byte order mark.
    [[nodiscard]] static std::optional<PreferencesMembers> parse(const QByteArray &json);

    /// The value of the member `key`; of members with the same name the last one counts. Undefined when there
    /// is none, or when its value is outside the range of Qt's types, such as 1e400.
    [[nodiscard]] QJsonValue value(const QString &key) const;

    /// Changes the member `key` in its place, or appends it; Undefined removes it.
    void set(const QString &key, const QJsonValue &value);

    /// The object as text, with each member on a line of its own.
    [[nodiscard]] QByteArray json() const;

    bool operator==(const PreferencesMembers &) const = default;

private:
    struct Member
    {
        bool operator==(const Member &other) const { return text == other.text; }

        QString name;
        QByteArray text; ///< The name, a colon and the value.
        QJsonValue value;
    };

    [[nodiscard]] static Member decoded(const QByteArray &text, const QString &otherwiseNamed);

    QList<Member> m_members;
};
