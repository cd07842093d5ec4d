// SPDX-License-Identifier: GPL-3.0-or-later
#include "ReceivedLog.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QStringDecoder>

#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

QString now()
{
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
}

QJsonObject headerMembers(const HeaderFields &headers)
{
    QJsonObject members;
    for (const auto &[name, value] : headers)
        members[QString::fromLatin1(name).toLower()] = QString::fromLatin1(value);
    return members;
}

} // namespace

ReceivedLog::ReceivedLog(QString file)
    : m_file(std::move(file))
{
}

void ReceivedLog::addRequest(const QString &kind, const HttpRequest &request, const QString &problem) const
{
    QJsonObject line{{u"time"_s, now()},
                     {u"kind"_s, kind},
                     {u"method"_s, QString::fromLatin1(request.method)},
                     {u"path"_s, request.path},
                     {u"headers"_s, headerMembers(request.headers)}};
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(request.body);
    if (decoder.hasError())
        line[u"bodyBase64"_s] = QString::fromLatin1(request.body.toBase64());
    else
        line[u"body"_s] = text;
    if (!request.query.isEmpty())
        line[u"query"_s] = request.query;
    if (!problem.isEmpty())
        line[u"problem"_s] = problem;
    append(line);
}

void ReceivedLog::addAcknowledgement(const QString &device, qint64 message) const
{
    append({{u"time"_s, now()},
            {u"kind"_s, u"acknowledgement"_s},
            {u"device"_s, device},
            {u"message"_s, message}});
}

QByteArray ReceivedLog::lines() const
{
    QFile file(m_file);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void ReceivedLog::append(const QJsonObject &line) const
{
    QFile file(m_file);
    const bool isAdded =
        file.open(QIODevice::WriteOnly | QIODevice::Append, QFile::ReadOwner | QFile::WriteOwner) &&
        file.write(QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n') > 0 && file.flush();
    if (!isAdded)
        throw std::runtime_error((m_file + u": "_s + file.errorString()).toStdString());
}
