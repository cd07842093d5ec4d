// SPDX-License-Identifier: GPL-3.0-or-later
#include "PortalAppearance.h"

#include "BusQuestion.h"
#include "HouseStyle.h"
#include "Palette.h"

#include <QApplication>
#include <QPalette>
#include <QRegularExpression>

#include <algorithm>
#include <chrono>

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString settingsInterface = u"org.freedesktop.portal.Settings"_s;
const QString appearanceNameSpace = u"org.freedesktop.appearance"_s;
const QString colorScheme = u"color-scheme"_s;
const QString contrast = u"contrast"_s;
constexpr unsigned higherContrast = 1;
constexpr double smallestFont = 6;
constexpr double largestFont = 32;

constexpr std::chrono::milliseconds answerTimeout(250);

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

/// What the portal on `bus` says; nothing if it does not know the setting or does not answer in time.
QVariant setting(const QDBusConnection &bus, const QString &nameSpace, const QString &key)
{
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, settingsInterface, u"Read"_s);
    question << nameSpace << key;
    return BusQuestion::valueOf(BusQuestion::ask(bus, question, answerTimeout));
}

/// The application's font with the family and the size in points of "Cantarell 11" or "Noto Sans,10,-1,5,50",
/// the forms of GNOME and KDE.
QFont fontIn(const QString &text)
{
    static const QRegularExpression form(uR"(^\s*([^,]+?)[\s,]+(\d+(?:\.\d+)?)\s*(?:,|$))"_s);
    const QRegularExpressionMatch match = form.match(text);
    QFont font = QApplication::font();
    if (match.hasMatch()) {
        font.setFamily(match.captured(1));
        font.setPointSizeF(std::clamp(match.captured(2).toDouble(), smallestFont, largestFont));
    }
    return font;
}

} // namespace

PortalAppearance::PortalAppearance(QDBusConnection bus)
{
    const QVariant scheme = bus.isConnected() ? setting(bus, appearanceNameSpace, colorScheme) : QVariant();
    if (bus.isConnected()) {
        // connect() looks up the types of the slot by name and fails silently for an unregistered one.
        qRegisterMetaType<QDBusVariant>();
        bus.connect(service, path, settingsInterface, u"SettingChanged"_s, this,
                    SLOT(settingChanged(QString, QString, QDBusVariant)));
    }
    // A portal that does not answer is asked once only.
    if (scheme.isValid()) {
        m_scheme = schemeOf(scheme);
        m_isHighContrast = setting(bus, appearanceNameSpace, contrast).toUInt() == higherContrast;
        QVariant font = setting(bus, u"org.gnome.desktop.interface"_s, u"font-name"_s);
        if (!font.isValid())
            font = setting(bus, u"org.kde.kdeglobals.General"_s, u"font"_s);
        QApplication::setFont(fontIn(font.toString()));
    }
    apply();
}

void PortalAppearance::apply() const
{
    QPalette palette;
    if (m_scheme == Scheme::NoPreference) {
        QApplication::setPalette(palette);
        palette = QApplication::palette();
    }
    // Without a preference a dark palette of the desktop is kept.
    if (m_scheme == Scheme::Dark)
        palette = darkPalette();
    else if (m_scheme == Scheme::Light || !isDarkAppearance(palette))
        palette = lightPalette();
    QApplication::setPalette(m_isHighContrast ? inHighContrast(palette) : palette);
}

void PortalAppearance::settingChanged(const QString &nameSpace, const QString &key, const QDBusVariant &value)
{
    // Other namespaces have keys of the same names with values of other types.
    if (nameSpace != appearanceNameSpace || (key != colorScheme && key != contrast))
        return;
    const QVariant changed = BusQuestion::unwrapped(value.variant());
    if (key == colorScheme)
        m_scheme = schemeOf(changed);
    else
        m_isHighContrast = changed.toUInt() == higherContrast;
    apply();
}
