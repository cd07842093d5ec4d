// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <compare>

/// A version of the program: numbers of any size separated by dots, and optionally a hyphen and a pre-release
/// ("1.2", "1.2.0-beta.1"). A value; any thread.
class UpdateVersion
{
public:
    /// No version.
    UpdateVersion() = default;

    /// Parses any text. No version if `text` has another form or more than 64 characters.
    explicit UpdateVersion(const QString &text);

    [[nodiscard]] bool isValid() const { return !m_numbers.isEmpty(); }

    /// The parsed text, safe as a file name; empty for no version.
    [[nodiscard]] const QString &text() const { return m_text; }

    /// Orders number by number, a missing number counting as 0, and pre-releases before their version and as
    /// in Semantic Versioning. No version is unordered with everything, including itself.
    std::partial_ordering operator<=>(const UpdateVersion &other) const;
    bool operator==(const UpdateVersion &other) const { return std::is_eq(*this <=> other); }

private:
    QString m_text;
    QStringList m_numbers;
    QStringList m_preRelease;
};
