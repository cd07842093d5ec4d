// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ArchiveReader.h"
#include "InstallationChange.h"
#include "UpdateInstaller.h"
#include "UpdateSignature.h"

#include <QObject>

#include <thread>

/// Installs updates in the user's home directory. The log says why something failed.
class HomeInstaller final : public QObject, public UpdateInstaller
{
    Q_OBJECT

public:
    /// Accepts only archives signed with the private key of `key` or of a later key of the item; without a
    /// key, none. `installed` is the
    /// running version. When `openArchive` returns null, prepare() fails with UpdateFailure::Disk.
    HomeInstaller(std::variant<Installation, NoInstallation> installation,
                  std::optional<Ed25519::PublicKey> key, UpdateVersion installed, OpenArchive openArchive);

    /// Waits until prepare() has finished writing.
    ~HomeInstaller() override;

    [[nodiscard]] Ability ability() const override;
    void prepare(const QByteArray &archive, const AppcastItem &item, QObject &context,
                 Completion completion) override;
    [[nodiscard]] UpdateVersion nextVersion() const override;
    [[nodiscard]] bool isInstalled(const UpdateVersion &version) const override;
    bool activate(const UpdateVersion &version) override;
    [[nodiscard]] bool isOnTrial() const override;
    void confirm() override;
    [[nodiscard]] UpdateVersion failedVersion() const override;
    void forgetFailure() override;

private:
    [[nodiscard]] bool isGenuine(const QByteArray &archive, const AppcastItem &item) const;
    [[nodiscard]] Result install(const QByteArray &archive, const AppcastItem &item) const;
    [[nodiscard]] std::optional<InstallationChange> begin() const;

    std::variant<Installation, NoInstallation> m_installation;
    std::optional<Ed25519::PublicKey> m_key;
    UpdateVersion m_installed;
    OpenArchive m_openArchive;
    std::jthread m_thread;
};
