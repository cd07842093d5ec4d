// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>

/// What the updater asks and tells the user. A question that comes unasked keeps out of the way: it takes no
/// focus, and waits while a break is on or another dialog is open. User-interface thread only; nothing waits
/// for an answer.
class UpdaterDriver
{
public:
    /// Whether the user has asked for what is shown.
    enum class Occasion
    {
        AskedFor,
        Unasked
    };

    /// What the user wants done with an update.
    enum class Answer
    {
        Install, ///< Or, where somebody else installs it, open the makers' page.
        Later,
        Skip
    };

    /// A version that can be had.
    struct Offer
    {
        QString version;
        QString installed;
        QString notes;              ///< Plain text; may be empty.
        bool installsItself = true; ///< Otherwise the user gets it from the makers' page.
        bool isAllowed = true;      ///< Whether the program could install it if it were not for its folder.
    };

    UpdaterDriver() = default;
    virtual ~UpdaterDriver() = default;
    UpdaterDriver(const UpdaterDriver &) = delete;
    UpdaterDriver &operator=(const UpdaterDriver &) = delete;

    /// Asks once whether to look for updates by itself.
    virtual void askPermission(std::function<void(bool)> answered) = 0;

    virtual void offerUpdate(const Offer &offer, Occasion occasion, std::function<void(Answer)> answered) = 0;

    /// Asks whether to begin with the installed `version` at once; otherwise it begins with the next start.
    virtual void offerRelaunch(const QString &version, Occasion occasion,
                               std::function<void(bool)> answered) = 0;

    /// Shows what the updater is doing, instead of what it showed before; `cancelled` is called when the user
    /// has had enough.
    virtual void showProgress(const QString &text, std::function<void()> cancelled) = 0;

    /// How much of it is done, from 0 to 1. Does nothing while no progress is shown.
    virtual void setProgress(double fraction) = 0;

    /// Takes the progress away; does nothing while there is none.
    virtual void hideProgress() = 0;

    /// Says how a check has ended that the user has asked for.
    virtual void tell(const QString &message, const QString &information) = 0;
};
