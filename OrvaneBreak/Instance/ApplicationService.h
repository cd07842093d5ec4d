// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDBusAbstractAdaptor>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <functional>

/// Ensures that one instance runs per session and implements org.freedesktop.Application: a second start
/// activates the first instance. User-interface thread only.
class ApplicationService final : public QObject
{
    Q_OBJECT

public:
    enum class Start
    {
        First,  ///< This process is the instance; also without a session bus.
        Second, ///< Another process is the instance and has performed the action.
        Failed, ///< Another process owns the name and does not answer.
    };

    /// `applicationId` is the bus name; the object path follows from it.
    explicit ApplicationService(const QString &applicationId);

    /// Acquires the name, or sends `action` (empty: activation) to the process that owns it and waits at most
    /// five seconds for the reply. Of several simultaneous starts, exactly one is the first.
    [[nodiscard]] Start start(const QString &action);

    /// Releases the name, so that the next process to start is the first; the name is free on return. Does
    /// nothing without a bus.
    void release() const;

    /// Called in the first process when a second start or a launcher activates the application.
    std::function<void()> onActivate;

    /// Called instead for the activation with which the bus has started this process.
    std::function<void()> onLaunch;

    /// Called with the identifier of each start that a launcher announces as under way.
    std::function<void(const QByteArray &id)> onStartupId;

    /// Called for the desktop entry's action "break-now".
    std::function<void()> onBreakNow;

    /// The methods that are called over the bus. `platformData` may contain an activation token and the
    /// identifier of a start, which are ignored if they contain control characters or are longer than 1,024
    /// bytes.
    void activate(const QVariantMap &platformData);
    void activateAction(const QString &name, const QVariantMap &platformData);

private:
    [[nodiscard]] Start handOver(const QString &action) const;
    void takePlatformData(const QVariantMap &platformData) const;

    QString m_applicationId;
    QString m_objectPath;
    bool m_isLaunchToCome = false; ///< Whether the bus has started this process and not activated it yet.
};

/// The D-Bus adaptor of `ApplicationService`.
class ApplicationAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationAdaptor(ApplicationService *service);

public Q_SLOTS:
    // NOLINTBEGIN(readability-identifier-naming): the names are the interface's
    void Activate(const QVariantMap &platform_data);
    void Open(const QStringList &uris, const QVariantMap &platform_data);
    void ActivateAction(const QString &action_name, const QVariantList &parameter,
                        const QVariantMap &platform_data);
    // NOLINTEND(readability-identifier-naming)

private:
    ApplicationService &m_service;
};
