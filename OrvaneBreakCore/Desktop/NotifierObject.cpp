// SPDX-License-Identifier: GPL-3.0-or-later
#include "NotifierObject.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMetaType>
#include <QGuiApplication>
#include <QtEndian>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString itemPath = u"/StatusNotifierItem"_s;

/// Qt gives each of its tray icons a connection with this name and a number, which counts the icons and the
/// questions whether there is a tray.
const QString connectionName = u"org.kde.StatusNotifierItem-%1-%2"_s;
constexpr int maxConnections = 64;

/// The connection of Qt's shown tray icon; not connected when there is none.
QDBusConnection connectionOfQt()
{
    for (int number = 1; number <= maxConnections; ++number) {
        const QDBusConnection connection(connectionName.arg(QCoreApplication::applicationPid()).arg(number));
        if (connection.isConnected() && connection.objectRegisteredAt(itemPath))
            return connection;
    }
    return QDBusConnection(QString());
}

NotifierImage notifierImage(const QImage &image)
{
    const QImage converted = image.convertToFormat(QImage::Format_ARGB32);
    QByteArray pixels(converted.sizeInBytes(), Qt::Uninitialized);
    qToBigEndian<quint32>(converted.constBits(), converted.sizeInBytes() / qsizetype{sizeof(quint32)},
                          pixels.data());
    return {converted.width(), converted.height(), pixels};
}

} // namespace

static QDBusArgument &operator<<(QDBusArgument &argument, const NotifierImage &image)
{
    argument.beginStructure();
    argument << image.width << image.height << image.pixels;
    argument.endStructure();
    return argument;
}

static const QDBusArgument &operator>>(const QDBusArgument &argument, NotifierImage &image)
{
    argument.beginStructure();
    argument >> image.width >> image.height >> image.pixels;
    argument.endStructure();
    return argument;
}

std::unique_ptr<QObject> NotifierObject::replaceOfQt(const QIcon &icon, std::function<void(QPoint)> openMenu)
{
    QDBusConnection connection = connectionOfQt();
    if (!connection.isConnected())
        return nullptr;
    qDBusRegisterMetaType<NotifierImage>();
    qDBusRegisterMetaType<QList<NotifierImage>>();
    auto object = std::make_unique<QObject>();
    new NotifierObject(object.get(), icon, std::move(openMenu));
    // The host learns of the icon from the event loop, so it never sees Qt's object.
    connection.unregisterObject(itemPath);
    connection.registerObject(itemPath, object.get(), QDBusConnection::ExportAdaptors);
    return object;
}

NotifierObject::NotifierObject(QObject *parent, QIcon icon, std::function<void(QPoint)> openMenu)
    : QDBusAbstractAdaptor(parent)
    , m_icon(std::move(icon))
    , m_openMenu(std::move(openMenu))
{
}

void NotifierObject::setIcon(const QIcon &icon)
{
    m_icon = icon;
    Q_EMIT NewIcon();
}

QString NotifierObject::category()
{
    return u"ApplicationStatus"_s;
}

QString NotifierObject::id()
{
    return QCoreApplication::applicationName();
}

QString NotifierObject::title()
{
    return QGuiApplication::applicationDisplayName();
}

QString NotifierObject::status()
{
    return u"Active"_s;
}

QList<NotifierImage> NotifierObject::iconPixmap() const
{
    QList<NotifierImage> images;
    for (const QSize &size : m_icon.availableSizes())
        images.append(notifierImage(m_icon.pixmap(size, 1.0).toImage()));
    return images;
}

QDBusObjectPath NotifierObject::menu()
{
    return QDBusObjectPath(u"/MenuBar"_s);
}
