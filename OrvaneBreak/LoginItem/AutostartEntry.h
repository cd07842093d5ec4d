// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LoginItem.h"

#include <QStringList>

/// The login item as an XDG autostart entry in the user's own autostart folder.
class AutostartEntry final : public LoginItem
{
public:
    /// Where the entry lies, what it starts, and on which desktop the question is asked.
    struct Parameters
    {
        QString file;         ///< `<autostart folder>/<application id>.desktop`
        QString executable;   ///< Absolute path, see `stableExecutable()`.
        QStringList desktops; ///< The names in XDG_CURRENT_DESKTOP.
    };

    explicit AutostartEntry(Parameters parameters);

    /// The entry of the running program: in $XDG_CONFIG_HOME/autostart, or ~/.config/autostart when that is
    /// not an absolute path. Needs the application object.
    [[nodiscard]] static Parameters standardParameters(const QString &applicationId);

    /// The path by which `executable` is still started after an update: an installation in
    /// `versions/<version>/` is reached through the `current` link beside `versions`, where there is one that
    /// leads to it, and `orvanebreak-program` by the launcher `orvanebreak` beside it, where there is one.
    [[nodiscard]] static QString stableExecutable(const QString &executable);

    /// On when the entry is there and neither hidden nor switched off nor meant for other desktops alone.
    [[nodiscard]] bool isEnabled() const override;

    /// Writes the entry anew, or removes it.
    [[nodiscard]] std::optional<QString> setEnabled(bool enabled) override;

private:
    [[nodiscard]] QString content() const;

    Parameters m_parameters;
};
