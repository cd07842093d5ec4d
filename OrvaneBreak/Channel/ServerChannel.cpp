// SPDX-License-Identifier: GPL-3.0-or-later
#include "ServerChannel.h"

#include "Bundle.h"
#include "Dates.h"
#include "Http.h"
#include "Preferences.h"
#include "SharedInstance.h"
#include "StrictJson.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUuid>

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString deviceIdKey = u"OBDeviceId"_s;

constexpr std::chrono::seconds checkInTimeout = 8s;
constexpr std::chrono::seconds reportTimeout = 10s;
constexpr int statusOk = 200;

bool isAccepted(const std::optional<HttpAnswer> &answer)
{
    if (!answer || answer->status != statusOk)
        return false;
    const std::optional<StrictJson> json = StrictJson::parseObject(answer->body);
    return json && json->boolean("ok").value_or(false);
}

} // namespace

ServerChannel::ServerChannel(Services services, Configuration configuration)
    : m_services(services)
    , m_configuration(std::move(configuration))
    , m_archive(services.preferences)
{
    if (!Http::isAllowed(QUrl(m_configuration.serverBase, QUrl::StrictMode)))
        qFatal("the configured address of the makers' server is not allowed");
}

ServerChannel &ServerChannel::shared()
{
    return SharedInstance<ServerChannel>::get();
}

QString ServerChannel::deviceId()
{
    if (const std::optional<QString> stored = m_services.preferences.text(deviceIdKey))
        return *stored;
    QString fresh = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    m_services.preferences.setValue(deviceIdKey, fresh);
    return fresh;
}

QString ServerChannel::osString() const
{
    return m_services.systemVersion.clientText();
}

void ServerChannel::checkWithServer(std::function<void()> completion)
{
    const QString nonce = QUuid::createUuid().toString(QUuid::Id128).toUpper();
    QJsonObject body = clientDescription();
    body.insert(u"n"_s, nonce);
    body.insert(u"c"_s, u"direct"_s);
    if (const std::optional<qint64> id = m_archive.acknowledged())
        body.insert(u"m"_s, *id);
    post(u"/api/check.php"_s, body, checkInTimeout,
         [this, nonce, completion = std::move(completion)](const std::optional<HttpAnswer> &answer) {
             if (answer)
                 takeMessage(answer->body, nonce);
             completion();
         });
}

void ServerChannel::takeMessage(const QByteArray &body, const QString &nonce)
{
    const CheckInVerdict verdict =
        judgeCheckInAnswer(body, nonce, m_configuration.publicKeyBase64, m_services.runLoop.now());
    const auto *message = std::get_if<ServerMessage>(&verdict);
    if (message && !m_archive.wasShown(message->id))
        m_pendingMessage = *message;
}

void ServerChannel::markMessageShown()
{
    if (m_pendingMessage)
        markMessageShown(ServerMessage(*m_pendingMessage));
}

void ServerChannel::markMessageShown(const ServerMessage &message)
{
    m_archive.markShown(message, now());
    if (m_pendingMessage && m_pendingMessage->id == message.id)
        m_pendingMessage.reset();
}

QList<ArchivedMessage> ServerChannel::messageHistory() const
{
    return m_archive.history(now());
}

void ServerChannel::archiveOwn(const QString &text)
{
    m_archive.addReply(text, now());
}

void ServerChannel::reportProblem(const QString &text, const QString &email,
                                  std::function<void(bool)> completion)
{
    QJsonObject body = clientDescription();
    body.insert(u"text"_s, text);
    if (!email.isEmpty())
        body.insert(u"email"_s, email);
    post(u"/api/report.php"_s, body, reportTimeout,
         [completion = std::move(completion)](const std::optional<HttpAnswer> &answer) {
             completion(isAccepted(answer));
         });
}

void ServerChannel::post(const QString &path, const QJsonObject &body, std::chrono::seconds timeout,
                         std::function<void(const std::optional<HttpAnswer> &)> completion)
{
    m_services.http.post(QUrl(m_configuration.serverBase + path, QUrl::StrictMode),
                         QJsonDocument(body).toJson(QJsonDocument::Compact), timeout, *this,
                         std::move(completion));
}

QJsonObject ServerChannel::clientDescription()
{
    return {{u"d"_s, deviceId()}, {u"v"_s, m_services.bundle.shortVersion()}, {u"os"_s, osString()}};
}

QDateTime ServerChannel::now() const
{
    return calendarDate(m_services.runLoop.now());
}
