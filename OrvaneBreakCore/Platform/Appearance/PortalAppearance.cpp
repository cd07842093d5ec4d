// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Appearance/PortalAppearance.h"

#include <QApplication>
#include <QDBusMessage>
#include <QPalette>

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString settingsInterface = u"org.freedesktop.portal.Settings"_s;
const QString appearanceNameSpace = u"org.freedesktop.appearance"_s;
const QString colorScheme = u"color-scheme"_s;

constexpr int timeoutMilliseconds = 250;

/// The value may come wrapped in variants.
PortalAppearance::Scheme schemeOf(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    switch (value.toUInt()) {
    case 1:
        return PortalAppearance::Scheme::Dark;
    case 2:
        return PortalAppearance::Scheme::Light;
    default:
        return PortalAppearance::Scheme::NoPreference;
    }
}

QPalette darkPalette()
{
    QPalette palette(QColor(0x32, 0x35, 0x3a), QColor(0x24, 0x26, 0x2a));
    palette.setColor(QPalette::Base, QColor(0x1b, 0x1d, 0x20));
    palette.setColor(QPalette::AlternateBase, QColor(0x24, 0x26, 0x2a));
    palette.setColor(QPalette::ToolTipBase, QColor(0x32, 0x35, 0x3a));
    palette.setColor(QPalette::Highlight, QColor(0x14, 0x8f, 0x82));
    palette.setColor(QPalette::Link, QColor(0x2d, 0xd4, 0xbf));
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
          QPalette::HighlightedText, QPalette::BrightText}) {
        palette.setColor(role, QColor(0xf2, 0xf3, 0xf4));
        palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x84, 0x8a));
    }
    palette.setColor(QPalette::PlaceholderText, QColor(0x9a, 0x9e, 0xa4));
    return palette;
}

QPalette lightPalette()
{
    QPalette palette(QColor(0xe9, 0xeb, 0xed), QColor(0xf4, 0xf5, 0xf6));
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Highlight, QColor(0x0d, 0x80, 0x76));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x0d, 0x94, 0x88));
    return palette;
}

} // namespace

PortalAppearance::PortalAppearance(QDBusConnection bus)
{
    if (!bus.isConnected())
        return;
    // Without this the connection is refused, silently: the bus looks the slot's types up by their names.
    qRegisterMetaType<QDBusVariant>();
    bus.connect(service, path, settingsInterface, u"SettingChanged"_s, this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, settingsInterface, u"Read"_s);
    question << appearanceNameSpace << colorScheme;
    const QDBusMessage answer = bus.call(question, QDBus::Block, timeoutMilliseconds);
    if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty())
        apply(schemeOf(answer.arguments().constFirst()));
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
        break;
    }
}

void PortalAppearance::settingChanged(const QString &nameSpace, const QString &key, const QDBusVariant &value)
{
    // Another name space has a key of the same name that holds a text.
    if (nameSpace == appearanceNameSpace && key == colorScheme)
        apply(schemeOf(value.variant()));
}
