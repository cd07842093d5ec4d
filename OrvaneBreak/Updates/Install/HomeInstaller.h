// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ArchiveReader.h"
#include "Installation.h"
#include "UpdateInstaller.h"
#include "UpdateSignature.h"

#include <QObject>

#include <thread>

/// The installer of the program in the user's home. Says in the log why something failed.
class HomeInstaller final : public QObject, public UpdateInstaller
{
    Q_OBJECT

public:
    /// Installs what is signed with the owner of `key`, and nothing without a key. `installed` is the version
    /// that runs. Where `openArchive` returns null, the update fails as on a disk that cannot be written.
    HomeInstaller(std::variant<Installation, NoInstallation> installation,
                  std::optional<Ed25519::PublicKey> key, UpdateVersion installed, OpenArchive openArchive);

    /// Waits for what is being written.
    ~HomeInstaller() override;

    [[nodiscard]] Ability ability() const override;
    void prepare(const QByteArray &archive, const AppcastItem &item, QObject &context,
                 Completion completion) override;
    bool activate(const UpdateVersion &version) override;
    [[nodiscard]] bool isOnTrial() const override;
    void confirm() override;

private:
    [[nodiscard]] std::optional<UpdateFailure> install(const QByteArray &archive,
                                                       const AppcastItem &item) const;

    std::variant<Installation, NoInstallation> m_installation;
    std::optional<Ed25519::PublicKey> m_key;
    UpdateVersion m_installed;
    OpenArchive m_openArchive;
    std::jthread m_thread;
};
