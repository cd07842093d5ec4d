// SPDX-License-Identifier: GPL-3.0-or-later
#include "PortalLoginItem.h"

#include "BusQuestion.h"

#include <QDBusMessage>
#include <QDir>
#include <QFileInfo>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString requestInterface = u"org.freedesktop.portal.Request"_s;

constexpr std::chrono::seconds answerTimeout(25);

} // namespace

PortalLoginItem::PortalLoginItem(const AutostartEntry::Parameters &registered, QDBusConnection bus)
    : m_registered(registered)
    , m_bus(std::move(bus))
{
}

bool PortalLoginItem::isNeeded()
{
    return QFileInfo::exists(u"/.flatpak-info"_s);
}

AutostartEntry::Parameters PortalLoginItem::standardParameters(const QString &applicationId)
{
    AutostartEntry::Parameters parameters = AutostartEntry::standardParameters(applicationId);
    const QString configured = qEnvironmentVariable("HOST_XDG_CONFIG_HOME");
    const QString folder = QDir::isAbsolutePath(configured) ? configured : QDir::homePath() + u"/.config"_s;
    parameters.isLocal = false;
    parameters.file = folder + u"/autostart/"_s + applicationId + u".desktop"_s;
    return parameters;
}

bool PortalLoginItem::isEnabled() const
{
    return m_registered.isEnabled();
}

bool PortalLoginItem::setEnabled(bool enabled)
{
    if (!m_bus.isConnected()) {
        logFailure(u"no session bus"_s);
        return false;
    }
    request(enabled);
    return true;
}

void PortalLoginItem::requestBackground()
{
    if (m_bus.isConnected())
        request(isEnabled());
}

void PortalLoginItem::request(bool isAutostart)
{
    const auto connectAnswer = [this](bool (QDBusConnection::*change)(const QString &, const QString &,
                                                                      const QString &, const QString &,
                                                                      QObject *, const char *)) {
        (m_bus.*change)(service, m_handle, requestInterface, u"Response"_s, this,
                        SLOT(answered(uint, QVariantMap)));
    };
    if (!m_handle.isEmpty())
        connectAnswer(&QDBusConnection::disconnect);
    // The handle follows from the token, so the response is connected before the request is sent and not
    // missed.
    const QString token = u"orvanebreak%1"_s.arg(++m_requestCount);
    m_handle = path + u"/request/"_s + m_bus.baseService().mid(1).replace(u'.', u'_') + u'/' + token;
    connectAnswer(&QDBusConnection::connect);
    m_isWanted = isAutostart;

    QDBusMessage message = QDBusMessage::createMethodCall(
        service, path, u"org.freedesktop.portal.Background"_s, u"RequestBackground"_s);
    message << QString()
            << QVariantMap{{u"handle_token"_s, token},
                           {u"reason"_s, u"Te rappeler de faire des pauses"_s},
                           {u"autostart"_s, isAutostart},
                           {u"commandline"_s, QStringList{u"orvanebreak"_s}},
                           {u"dbus-activatable"_s, false}};
    BusQuestion::askLater(m_bus, message, answerTimeout, *this,
                          [this, handle = m_handle](const QDBusMessage &reply) {
                              if (reply.type() == QDBusMessage::ErrorMessage && handle == m_handle)
                                  refuse(reply.errorName());
                          });
}

void PortalLoginItem::answered(uint response, const QVariantMap &results)
{
    if (response != 0 || !results.value(u"background"_s).toBool())
        refuse(u"refused by the portal"_s);
    else if (results.value(u"autostart"_s).toBool() != m_isWanted)
        refuse(u"autostart refused by the portal"_s);
}

void PortalLoginItem::refuse(const QString &reason)
{
    logFailure(reason);
    if (onRefused)
        onRefused();
}
