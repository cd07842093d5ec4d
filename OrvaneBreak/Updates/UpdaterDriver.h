// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdateInstaller.h"

#include <QString>

#include <functional>

/// The updater's user interface. An unasked question takes no focus, and waits until no break and no other
/// dialog is on screen. User-interface thread only; no call blocks until the user answers.
class UpdaterDriver
{
public:
    /// Whether the user has asked for what is shown.
    enum class Occasion
    {
        AskedFor,
        Unasked
    };

    /// The user's answer to an offer.
    enum class Answer
    {
        Install, ///< Or open the makers' page, when the program cannot install the update.
        Later,
        Skip
    };

    /// An available version.
    struct Offer
    {
        QString version;
        QString installed;
        QString notes; ///< Plain text; may be empty.
        /// Unless it is Itself, the user gets the version from the makers' page.
        UpdateInstaller::Ability ability = UpdateInstaller::Ability::Itself;
        bool isCritical = false; ///< Cannot be skipped.
    };

    UpdaterDriver() = default;
    virtual ~UpdaterDriver() = default;
    UpdaterDriver(const UpdaterDriver &) = delete;
    UpdaterDriver &operator=(const UpdaterDriver &) = delete;

    /// Asks whether to check for updates automatically, in front of all windows.
    virtual void askPermission(std::function<void(bool)> answered) = 0;

    virtual void offerUpdate(const Offer &offer, Occasion occasion, std::function<void(Answer)> answered) = 0;

    /// Asks whether to restart into the prepared `version` now rather than use it from the next start on.
    virtual void offerRelaunch(const QString &version, Occasion occasion,
                               std::function<void(bool)> answered) = 0;

    /// Shows `text` and an indeterminate progress bar, replacing the previous progress; `cancelled` is called
    /// when the user cancels.
    virtual void showProgress(const QString &text, std::function<void()> cancelled) = 0;

    /// Sets the progress, from 0 to 1. Does nothing while no progress is shown.
    virtual void setProgress(double fraction) = 0;

    /// Does nothing while no progress is shown.
    virtual void hideProgress() = 0;

    /// Shows a message.
    virtual void tell(const QString &message, const QString &information, Occasion occasion) = 0;
};
