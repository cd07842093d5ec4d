// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AutostartEntry.h"
#include "LoginItem.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantMap>

/// The login item of a sandboxed program, which may not write the session's autostart folder: the desktop's
/// portal does it, after asking the user if it likes. The folder can still be read, and tells how things are.
class PortalLoginItem final : public QObject, public LoginItem
{
    Q_OBJECT

public:
    /// Where the portal writes: `<host's autostart folder>/<application id>.desktop`, read for `isEnabled()`.
    /// A bus that is not connected has no portal.
    explicit PortalLoginItem(const AutostartEntry::Parameters &registered,
                             QDBusConnection bus = QDBusConnection::sessionBus());

    /// True in a sandbox of Flatpak's.
    [[nodiscard]] static bool isNeeded();

    /// The entry that the portal writes for `applicationId`: in the autostart folder below
    /// $HOST_XDG_CONFIG_HOME, or below ~/.config when that is not an absolute path.
    [[nodiscard]] static AutostartEntry::Parameters standardParameters(const QString &applicationId);

    /// True when the portal's entry is there and not switched off.
    [[nodiscard]] bool isEnabled() const override;

    /// Asks the portal and returns at once. What went wrong then is only that there is no bus; a later
    /// refusal is logged in one line and told by `onRefused`.
    [[nodiscard]] std::optional<QString> setEnabled(bool enabled) override;

    /// Asks the portal that the program may go on without a window, and leaves the login item as it is. A
    /// refusal is logged.
    void requestBackground();

private Q_SLOTS:
    void answered(uint response, const QVariantMap &results);

private:
    void request(bool isAutostart);
    void refuse(const QString &reason);

    AutostartEntry m_registered;
    QDBusConnection m_bus;
    QString m_handle; ///< Of the latest request, whose answer is the only one that counts.
    unsigned m_requestCount = 0;
    bool m_isWanted = false;
};
