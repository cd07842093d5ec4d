// SPDX-License-Identifier: GPL-3.0-or-later
#include "PortalAppearance.h"

#include "BusQuestion.h"
#include "HouseStyle.h"
#include "Palette.h"

#include <QApplication>
#include <QPalette>

#include <chrono>

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString settingsInterface = u"org.freedesktop.portal.Settings"_s;
const QString appearanceNameSpace = u"org.freedesktop.appearance"_s;
const QString colorScheme = u"color-scheme"_s;

constexpr std::chrono::milliseconds schemeAnswerTimeout(250);

PortalAppearance::Scheme schemeOf(const QVariant &value)
{
    switch (value.toUInt()) {
    case 1:
        return PortalAppearance::Scheme::Dark;
    case 2:
        return PortalAppearance::Scheme::Light;
    default:
        return PortalAppearance::Scheme::NoPreference;
    }
}

/// What the portal on `bus` says, waiting for a quarter of a second at most.
PortalAppearance::Scheme askedFor(const QDBusConnection &bus)
{
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, settingsInterface, u"Read"_s);
    question << appearanceNameSpace << colorScheme;
    return schemeOf(BusQuestion::valueOf(BusQuestion::ask(bus, question, schemeAnswerTimeout)));
}

} // namespace

PortalAppearance::PortalAppearance(QDBusConnection bus)
{
    if (!bus.isConnected()) {
        apply(Scheme::NoPreference);
        return;
    }
    // connect() looks up the types of the slot by name and fails silently for an unregistered one.
    qRegisterMetaType<QDBusVariant>();
    bus.connect(service, path, settingsInterface, u"SettingChanged"_s, this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    apply(askedFor(bus));
}

void PortalAppearance::apply(Scheme scheme)
{
    switch (scheme) {
    case Scheme::Dark:
        QApplication::setPalette(darkPalette());
        break;
    case Scheme::Light:
        QApplication::setPalette(lightPalette());
        break;
    case Scheme::NoPreference:
        QApplication::setPalette(QPalette());
        // A dark palette of the desktop is kept.
        if (!isDarkAppearance(QApplication::palette()))
            QApplication::setPalette(lightPalette());
        break;
    }
}

void PortalAppearance::settingChanged(const QString &nameSpace, const QString &key, const QDBusVariant &value)
{
    // Another namespace has a key of the same name with a text as its value.
    if (nameSpace == appearanceNameSpace && key == colorScheme)
        apply(schemeOf(BusQuestion::unwrapped(value.variant())));
}
