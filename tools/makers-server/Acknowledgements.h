// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Which device has said that it showed which message, kept in one JSON file.
class Acknowledgements final
{
public:
    explicit Acknowledgements(QString file);

    /// Remembers that `device` has shown message `id`; false when that was known. Throws std::runtime_error
    /// when it cannot be kept.
    bool add(const QString &device, qint64 id);

    [[nodiscard]] bool contains(const QString &device, qint64 id) const;

private:
    QString m_file;
};
