// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusAbstractAdaptor>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <functional>

/// Makes the program the only one of its name in the session and answers org.freedesktop.Application: a
/// second start, from wherever, activates the first. User-interface thread.
class ApplicationService final : public QObject
{
    Q_OBJECT

public:
    enum class Start
    {
        First,  ///< This process is the one that lives, also where there is no session bus.
        Second, ///< Another process lives and has been asked to do what this one was started for.
        Failed, ///< Another process has the name and does not answer.
    };

    /// `applicationId` is the bus name; the object path follows from it.
    explicit ApplicationService(const QString &applicationId);

    /// Takes the name, or hands `action` (empty: activation) to the process that has it; waits for it at most
    /// five seconds. Two starts at the same instant: exactly one is the first.
    [[nodiscard]] Start start(const QString &action);

    /// Gives the name back, so that the next process to start is the first; it is free when this returns.
    /// Does nothing without a bus.
    void release() const;

    /// Called in the first process when a second start, the launcher or the tray wants the application in
    /// front.
    std::function<void()> onActivate;

    /// Called for the desktop entry's action "break-now".
    std::function<void()> onBreakNow;

    /// What the bus calls; `platformData` may carry an activation token. One that is no single line of text,
    /// or longer than 1,024 bytes, is left alone.
    void activate(const QVariantMap &platformData) const;
    void activateAction(const QString &name, const QVariantMap &platformData) const;

private:
    [[nodiscard]] Start handOver(const QString &action) const;

    QString m_applicationId;
    QString m_objectPath;
};

/// The D-Bus face of `ApplicationService`.
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
