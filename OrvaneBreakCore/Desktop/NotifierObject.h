// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QIcon>
#include <QPoint>

#include <functional>
#include <memory>

/// A picture of an icon: 32-bit ARGB in network byte order, row by row.
struct NotifierImage
{
    int width = 0;
    int height = 0;
    QByteArray pixels;
};
Q_DECLARE_METATYPE(NotifierImage)

/// A tray icon on the session bus, as org.kde.StatusNotifierItem describes it. It replaces the object that Qt
/// registers for a QSystemTrayIcon and that sends clicks to the program: a click on this icon opens its menu,
/// in hosts that show the menu themselves as in those that leave it to the program. The menu on the bus stays
/// Qt's. User-interface thread only.
class NotifierObject final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QString IconName READ iconName CONSTANT)
    Q_PROPERTY(QList<NotifierImage> IconPixmap READ iconPixmap NOTIFY NewIcon)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)

public:
    /// Takes the place of the object of Qt's shown tray icon. Null when Qt has none on the session bus.
    /// `openMenu` is called with a point on the screen when the host leaves it to the program to open the
    /// menu.
    [[nodiscard]] static std::unique_ptr<QObject> replaceOfQt(const QIcon &icon,
                                                              std::function<void(QPoint)> openMenu);

    NotifierObject(QObject *parent, QIcon icon, std::function<void(QPoint)> openMenu);

    /// Shows `icon` from now on.
    void setIcon(const QIcon &icon);

    [[nodiscard]] static QString category();
    [[nodiscard]] static QString id();
    [[nodiscard]] static QString title();
    [[nodiscard]] static QString status();
    [[nodiscard]] static QString iconName() { return {}; }
    [[nodiscard]] QList<NotifierImage> iconPixmap() const;
    [[nodiscard]] static bool itemIsMenu() { return true; }
    [[nodiscard]] static QDBusObjectPath menu();

public Q_SLOTS:
    void Activate(int x, int y) const { m_openMenu({x, y}); }
    void SecondaryActivate(int x, int y) const { m_openMenu({x, y}); }
    void ContextMenu(int x, int y) const { m_openMenu({x, y}); }
    void Scroll(int /*delta*/, const QString & /*orientation*/) const {}

Q_SIGNALS:
    void NewIcon();

private:
    QIcon m_icon;
    std::function<void(QPoint)> m_openMenu;
};
