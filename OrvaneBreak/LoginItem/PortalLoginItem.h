// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AutostartEntry.h"
#include "LoginItem.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantMap>

/// The login item of a sandboxed program, which cannot write the session's autostart folder: the desktop's
/// portal writes the entry, and may ask the user first. The program can read the entry.
class PortalLoginItem final : public QObject, public LoginItem
{
    Q_OBJECT

public:
    /// `registered` describes the entry that the portal writes, `<host's autostart folder>/<application
    /// id>.desktop`. A bus that is not connected has no portal.
    explicit PortalLoginItem(const AutostartEntry::Parameters &registered,
                             QDBusConnection bus = QDBusConnection::sessionBus());

    /// True in a Flatpak sandbox.
    [[nodiscard]] static bool isNeeded();

    /// The entry that the portal writes for `applicationId`: in the autostart folder below
    /// $HOST_XDG_CONFIG_HOME, or below ~/.config if that is not an absolute path.
    [[nodiscard]] static AutostartEntry::Parameters standardParameters(const QString &applicationId);

    /// True if the portal's entry exists and is not disabled.
    [[nodiscard]] bool isEnabled() const override;

    /// Sends the request to the portal and returns at once; false only without a bus. A later refusal is
    /// logged in one line and reported through `onRefused`.
    [[nodiscard]] bool setEnabled(bool enabled) override;

    /// Asks the portal for permission to run without a window, and leaves the login item as it is. A refusal
    /// is logged and reported through `onRefused`.
    void requestBackground();

private Q_SLOTS:
    void answered(uint response, const QVariantMap &results);

private:
    void request(bool isAutostart);
    void refuse(const QString &reason);

    AutostartEntry m_registered;
    QDBusConnection m_bus;
    QString m_handle; ///< Of the latest request; responses to earlier ones are ignored.
    unsigned m_requestCount = 0;
    bool m_isWanted = false;
};
