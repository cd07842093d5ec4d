// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LoginItem.h"

#include <QHash>
#include <QStringList>

/// The login item as an XDG autostart entry in the user's own autostart folder.
class AutostartEntry final : public LoginItem
{
public:
    /// The file of the entry, what it starts, and the current desktop.
    struct Parameters
    {
        QString file;         ///< `<autostart folder>/<application id>.desktop`
        QString executable;   ///< Absolute path, see `stableExecutable()`.
        QStringList desktops; ///< The names in XDG_CURRENT_DESKTOP.
        bool isLocal = true;  ///< Whether this process sees the programs that the entry may name.
    };

    explicit AutostartEntry(Parameters parameters);

    /// The parameters for the running program: its entry is in $XDG_CONFIG_HOME/autostart, or in
    /// ~/.config/autostart if the variable is not an absolute path. Needs the application object.
    [[nodiscard]] static Parameters standardParameters(const QString &applicationId);

    /// A path that still starts the program after an update: in `versions/<version>/` it leads through the
    /// link `current` beside `versions`, if that leads to the same file, and instead of `orvanebreak-program`
    /// it is the launcher `orvanebreak` beside it, if there is one.
    [[nodiscard]] static QString stableExecutable(const QString &executable);

    /// True if the entry exists, is not hidden, disabled or limited to other desktops, and starts a program
    /// that exists.
    [[nodiscard]] bool isEnabled() const override;

    /// Writes the entry again if it is switched on and names a copy of the program that is gone.
    void renew();

    /// Writes the entry, replacing an earlier one, or removes it.
    [[nodiscard]] bool setEnabled(bool enabled) override;

private:
    [[nodiscard]] QString content() const;
    [[nodiscard]] bool isSwitchedOn(const QHash<QString, QString> &keys) const;

    Parameters m_parameters;
};
