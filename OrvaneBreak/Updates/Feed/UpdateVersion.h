// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <compare>

/// A version of the program: numbers with dots between them, of any size, and perhaps a hyphen with a
/// pre-release after them ("1.2", "1.2.0-beta.1"). A value; any thread.
class UpdateVersion
{
public:
    /// No version.
    UpdateVersion() = default;

    /// What `text` says; any text may be given. A text that says anything else, or more than 64 characters of
    /// it, is no version.
    explicit UpdateVersion(const QString &text);

    [[nodiscard]] bool isValid() const { return !m_numbers.isEmpty(); }

    /// The text as it was given, fit for a file name; empty for no version.
    [[nodiscard]] const QString &text() const { return m_text; }

    /// Which is newer: number by number, where missing ones are 0; a pre-release comes before its version,
    /// and pre-releases follow Semantic Versioning. No version is unordered with everything, itself included.
    std::partial_ordering operator<=>(const UpdateVersion &other) const;
    bool operator==(const UpdateVersion &other) const { return std::is_eq(*this <=> other); }

private:
    QString m_text;
    QStringList m_numbers;
    QStringList m_preRelease;
};
