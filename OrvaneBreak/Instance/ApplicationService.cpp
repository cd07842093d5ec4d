// SPDX-License-Identifier: GPL-3.0-or-later
#include "ApplicationService.h"

#include "BusQuestion.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds answerTimeout(5);
constexpr qsizetype maxTokenLength = 1'024;

/// The activation data with which the desktop started this process.
QVariantMap platformDataOfThisStart()
{
    QVariantMap data;
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    if (!token.isEmpty())
        data.insert(u"activation-token"_s, token);
    return data;
}

bool isControl(char byte)
{
    return (byte >= 0 && byte < ' ') || byte == '\x7f';
}

/// The text `key`; empty if it is not one that launchers make. Any process on the bus may send one, and an
/// overlong environment variable would keep this process from starting others.
QByteArray tokenIn(const QVariantMap &platformData, const QString &key)
{
    QByteArray token = platformData.value(key).toString().toUtf8();
    if (token.size() > maxTokenLength || std::any_of(token.begin(), token.end(), isControl))
        token.clear();
    return token;
}

} // namespace

ApplicationService::ApplicationService(const QString &applicationId)
    : m_applicationId(applicationId)
    , m_objectPath(u'/' + QString(applicationId).replace(u'.', u'/').replace(u'-', u'_'))
{
    new ApplicationAdaptor(this);
}

ApplicationService::Start ApplicationService::start(const QString &action)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return Start::First;
    m_isLaunchToCome = qEnvironmentVariableIsSet("DBUS_STARTER_ADDRESS");
    for (const char *variable : {"DBUS_STARTER_ADDRESS", "DBUS_STARTER_BUS_TYPE"})
        qunsetenv(variable);
    // The object is registered first, because other processes call it as soon as the name is taken.
    bus.registerObject(m_objectPath, this, QDBusConnection::ExportAdaptors);
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
        bus.interface()->registerService(m_applicationId, QDBusConnectionInterface::DontQueueService,
                                         QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceNotRegistered)
        return handOver(action);
    return Start::First;
}

void ApplicationService::release() const
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected())
        bus.interface()->unregisterService(m_applicationId);
}

ApplicationService::Start ApplicationService::handOver(const QString &action) const
{
    const bool isActivation = action.isEmpty();
    QDBusMessage message =
        QDBusMessage::createMethodCall(m_applicationId, m_objectPath, u"org.freedesktop.Application"_s,
                                       isActivation ? u"Activate"_s : u"ActivateAction"_s);
    if (!isActivation)
        message << action << QVariantList();
    message << platformDataOfThisStart();
    const QDBusMessage answer = BusQuestion::ask(QDBusConnection::sessionBus(), message, answerTimeout);
    return answer.type() == QDBusMessage::ReplyMessage ? Start::Second : Start::Failed;
}

void ApplicationService::takePlatformData(const QVariantMap &platformData) const
{
    // Qt takes the token from the environment for the next activation of a window.
    const QByteArray token = tokenIn(platformData, u"activation-token"_s);
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token);
    const QByteArray startupId = tokenIn(platformData, u"desktop-startup-id"_s);
    if (!startupId.isEmpty() && onStartupId)
        onStartupId(startupId);
}

void ApplicationService::activate(const QVariantMap &platformData)
{
    takePlatformData(platformData);
    if (const auto &listener = std::exchange(m_isLaunchToCome, false) ? onLaunch : onActivate)
        listener();
}

void ApplicationService::activateAction(const QString &name, const QVariantMap &platformData)
{
    takePlatformData(platformData);
    m_isLaunchToCome = false;
    if (name == "break-now"_L1 && onBreakNow)
        onBreakNow();
}

ApplicationAdaptor::ApplicationAdaptor(ApplicationService *service)
    : QDBusAbstractAdaptor(service)
    , m_service(*service)
{
}

void ApplicationAdaptor::Activate(const QVariantMap &platform_data)
{
    m_service.activate(platform_data);
}

void ApplicationAdaptor::Open(const QStringList & /*uris*/, const QVariantMap &platform_data)
{
    m_service.activate(platform_data);
}

void ApplicationAdaptor::ActivateAction(const QString &action_name, const QVariantList & /*parameter*/,
                                        const QVariantMap &platform_data)
{
    m_service.activateAction(action_name, platform_data);
}
