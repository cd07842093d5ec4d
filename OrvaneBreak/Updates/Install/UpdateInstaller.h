// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Appcast.h"

#include <QByteArray>

#include <functional>
#include <variant>

class QObject;

/// Why an archive was not installed.
enum class UpdateFailure
{
    NotGenuine, ///< Not signed by the makers, or not of the announced length.
    Damaged,    ///< Signed, but not a valid update or not the announced version.
    Disk,       ///< The disk cannot be written, or another process is installing an update.
};

/// Installs updates of the running program. User-interface thread only.
class UpdateInstaller
{
public:
    /// Who installs a new version of this program.
    enum class Ability
    {
        Itself,
        PackageManager,
        Unpacked,   ///< Nobody: the user unpacked or built it, but did not install it.
        NotAllowed, ///< Nobody: this user may not write to the installation.
    };

    /// The prepared version, or why there is none.
    using Result = std::variant<UpdateVersion, UpdateFailure>;
    using Completion = std::function<void(const Result &)>;

    UpdateInstaller() = default;
    virtual ~UpdateInstaller() = default;
    UpdateInstaller(const UpdateInstaller &) = delete;
    UpdateInstaller &operator=(const UpdateInstaller &) = delete;

    [[nodiscard]] virtual Ability ability() const = 0;

    /// Verifies the signature of `archive` and installs its version beside the running one, which stays
    /// current until activate(). Works on its own thread and calls `completion` from the event loop, unless
    /// `context` was destroyed; the version is then complete but not current. A second call waits for the
    /// first one.
    virtual void prepare(const QByteArray &archive, const AppcastItem &item, QObject &context,
                         Completion completion) = 0;

    /// The version that the next start uses; no version when this program does not update itself.
    [[nodiscard]] virtual UpdateVersion nextVersion() const = 0;

    /// Whether `version` is complete beside the running one, so that activate() can use it.
    [[nodiscard]] virtual bool isInstalled(const UpdateVersion &version) const = 0;

    /// Makes `version` start from now on; the running process continues. Takes a few milliseconds. Does
    /// nothing when it is current already. When it returns false, nothing has changed.
    virtual bool activate(const UpdateVersion &version) = 0;

    /// Whether the current version is on trial: the launcher goes back to the version before if two starts in
    /// a row end without confirm().
    [[nodiscard]] virtual bool isOnTrial() const = 0;

    /// Ends the trial of the running version and removes old versions. Does nothing when it is not on trial.
    virtual void confirm() = 0;

    /// The version that the launcher gave up; no version when there is none.
    [[nodiscard]] virtual UpdateVersion failedVersion() const = 0;

    /// Removes the version that the launcher gave up.
    virtual void forgetFailure() = 0;
};
