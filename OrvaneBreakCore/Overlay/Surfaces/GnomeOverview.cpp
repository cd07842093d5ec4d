// SPDX-License-Identifier: GPL-3.0-or-later
#include "GnomeOverview.h"

#include "BusQuestion.h"

#include <QDBusVariant>

#include <chrono>

using namespace Qt::StringLiterals;

namespace {

constexpr int maxCloses = 20;
constexpr std::chrono::seconds overviewAnswerTimeout(5);

const QString gnomeShell = u"org.gnome.Shell"_s;
const QString gnomeShellPath = u"/org/gnome/Shell"_s;
const QString overviewActive = u"OverviewActive"_s;
const QString propertiesInterface = u"org.freedesktop.DBus.Properties"_s;

} // namespace

GnomeOverview::GnomeOverview(const QDBusConnection &sessionBus)
    : m_bus(sessionBus)
{
    // The bus looks the slot's types up by their names.
    qRegisterMetaType<QVariantMap>();
}

void GnomeOverview::keepClosed()
{
    leaveAlone();
    if (!m_bus.isConnected())
        return;
    m_attemptsLeft = maxCloses;
    m_bus.connect(gnomeShell, gnomeShellPath, propertiesInterface, u"PropertiesChanged"_s, this,
                  SLOT(propertiesChanged(QString, QVariantMap)));
    BusQuestion::askLater(m_bus,
                          BusQuestion::forProperty(gnomeShell, gnomeShellPath, gnomeShell, overviewActive),
                          overviewAnswerTimeout, *this,
                          [this](const QDBusMessage &reply) { closeIfOpen(BusQuestion::valueOf(reply)); });
}

void GnomeOverview::leaveAlone()
{
    m_attemptsLeft = 0;
    m_bus.disconnect(gnomeShell, gnomeShellPath, propertiesInterface, u"PropertiesChanged"_s, this,
                     SLOT(propertiesChanged(QString, QVariantMap)));
}

void GnomeOverview::propertiesChanged(const QString &interface, const QVariantMap &changed)
{
    if (interface == gnomeShell)
        closeIfOpen(changed.value(overviewActive));
}

void GnomeOverview::closeIfOpen(const QVariant &isOpen)
{
    if (!isOpen.toBool() || m_attemptsLeft == 0)
        return;
    --m_attemptsLeft;
    QDBusMessage request =
        BusQuestion::toRunningService(gnomeShell, gnomeShellPath, propertiesInterface, u"Set"_s);
    request << gnomeShell << overviewActive << QVariant::fromValue(QDBusVariant(false));
    m_bus.send(request);
}
