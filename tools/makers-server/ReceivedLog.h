// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "HttpExchange.h"

#include <QJsonObject>
#include <QString>

/// Everything that clients sent, one JSON object per line, oldest first. It holds what users wrote, and is
/// readable by its owner alone.
class ReceivedLog final
{
public:
    explicit ReceivedLog(QString file);

    /// Adds a request with its "kind": "check-in", "report" (replies are reports too), "crash" or "other";
    /// with "time", "method", "path", "headers" (names in lower case), and "body", or "bodyBase64" when that
    /// is not UTF-8. `problem` says what is wrong with it, and is left out when empty. Throws
    /// std::runtime_error when it cannot be written.
    void addRequest(const QString &kind, const HttpRequest &request, const QString &problem) const;

    /// Adds a line of the kind "acknowledgement": `device` has shown `message`.
    void addAcknowledgement(const QString &device, qint64 message) const;

    /// All lines so far.
    [[nodiscard]] QByteArray lines() const;

private:
    void append(const QJsonObject &line) const;

    QString m_file;
};
