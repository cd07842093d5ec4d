// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Appcast.h"

#include <QByteArray>

#include <functional>
#include <optional>

class QObject;

/// Why an archive did not become an installed version.
enum class UpdateFailure
{
    NotGenuine, ///< Not signed by the makers, or not as long as announced.
    Damaged,    ///< The makers' archive, but not one that can be installed, or of another version than
                ///< announced.
    Disk,       ///< It cannot be written, or another process is installing something.
};

/// Installs updates of the running program. User-interface thread only.
class UpdateInstaller
{
public:
    /// Who replaces this program when there is a new version.
    enum class Ability
    {
        Itself,
        Others,     ///< A package manager, or whoever unpacked or built it.
        NotAllowed, ///< It would, but this user may not write there.
    };

    using Completion = std::function<void(std::optional<UpdateFailure>)>;

    UpdateInstaller() = default;
    virtual ~UpdateInstaller() = default;
    UpdateInstaller(const UpdateInstaller &) = delete;
    UpdateInstaller &operator=(const UpdateInstaller &) = delete;

    [[nodiscard]] virtual Ability ability() const = 0;

    /// Checks the signature over all of `archive`, and puts the version in it beside the running one, which
    /// stays in use. Works on a thread of its own; `completion` is called from the event loop, without a
    /// failure when activate() can follow. Destroying `context` lets the call go. One at a time.
    virtual void prepare(const QByteArray &archive, const AppcastItem &item, QObject &context,
                         Completion completion) = 0;

    /// Makes the prepared `version` the one that starts from now on; the running one goes on. Takes a few
    /// milliseconds. Returns whether it worked; otherwise everything is as before.
    virtual bool activate(const UpdateVersion &version) = 0;

    /// Whether the running version starts for the first time, and would be given up if it failed.
    [[nodiscard]] virtual bool isOnTrial() const = 0;

    /// Tells that the running version has started well: its trial ends, and old versions are removed. Does
    /// nothing when it is not on trial.
    virtual void confirm() = 0;
};
