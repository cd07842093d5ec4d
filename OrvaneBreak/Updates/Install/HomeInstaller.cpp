// SPDX-License-Identifier: GPL-3.0-or-later
#include "HomeInstaller.h"

#include "MessageFilter.h"
#include "QueuedAnswer.h"
#include "SignalStack.h"
#include "UnpackedUpdate.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

void log(const QString &text)
{
    qCInfo(orvaneLog).noquote() << u"OrvaneBreak: mise à jour: "_s + text;
}

/// Whether a step of a change succeeded; logs the problem if it did not.
bool succeeded(const std::optional<QString> &problem)
{
    if (problem)
        log(*problem);
    return !problem;
}

UpdateFailure failureOf(const UnpackFailure &failure)
{
    // In the order of UnpackProblem.
    static constexpr std::array reasons{"damaged archive",
                                        "not one folder of a version",
                                        "bad path",
                                        "bad link",
                                        "bad kind",
                                        "bad mode",
                                        "path twice",
                                        "too many entries",
                                        "too large",
                                        "bad version",
                                        "disk"};
    log(QString::fromLatin1(reasons.at(static_cast<std::size_t>(failure.problem))) + u": "_s +
        failure.detail);
    return failure.problem == UnpackProblem::Disk ? UpdateFailure::Disk : UpdateFailure::Damaged;
}

} // namespace

HomeInstaller::HomeInstaller(std::variant<Installation, NoInstallation> installation,
                             std::optional<Ed25519::PublicKey> key, UpdateVersion installed,
                             OpenArchive openArchive)
    : m_installation(std::move(installation))
    , m_key(key)
    , m_installed(std::move(installed))
    , m_openArchive(std::move(openArchive))
{
}

HomeInstaller::~HomeInstaller() = default;

UpdateInstaller::Ability HomeInstaller::ability() const
{
    const auto *reason = std::get_if<NoInstallation>(&m_installation);
    if (!reason)
        return Ability::Itself;
    switch (*reason) {
    case NoInstallation::PackageManager:
        return Ability::PackageManager;
    case NoInstallation::NotWritable:
        return Ability::NotAllowed;
    case NoInstallation::BuildTree:
        break;
    }
    return Ability::Unpacked;
}

void HomeInstaller::prepare(const QByteArray &archive, const AppcastItem &item, QObject &context,
                            Completion completion)
{
    const auto finish = queuedAnswer(*this, context, std::move(completion));
    try {
        // An abandoned call may still be writing; join it first.
        m_thread = std::jthread();
        m_thread = std::jthread([this, archive, item, finish] {
            const SignalStack signalStack;
            finish(install(archive, item));
        });
    } catch (const std::system_error &) {
        finish(UpdateFailure::Disk);
    }
}

bool HomeInstaller::isGenuine(const QByteArray &archive, const AppcastItem &item) const
{
    const auto isSignedBy = [&](const Ed25519::PublicKey &key) {
        return UpdateSignature::verify(archive, item.length, item.signature, key);
    };
    return m_key &&
           (isSignedBy(*m_key) || std::any_of(item.laterKeys.begin(), item.laterKeys.end(), isSignedBy));
}

std::optional<InstallationChange> HomeInstaller::begin() const
{
    const auto *installation = std::get_if<Installation>(&m_installation);
    return installation ? InstallationChange::begin(*installation) : std::nullopt;
}

UpdateInstaller::Result HomeInstaller::install(const QByteArray &archive, const AppcastItem &item) const
{
    if (ability() != Ability::Itself)
        return UpdateFailure::Disk;
    if (!isGenuine(archive, item)) {
        log(u"the archive is not signed by the makers"_s);
        return UpdateFailure::NotGenuine;
    }
    std::optional<InstallationChange> change = begin();
    if (!change) {
        log(u"the installation cannot be changed now"_s);
        return UpdateFailure::Disk;
    }
    const std::unique_ptr<ArchiveReader> reader = m_openArchive(archive);
    if (!reader) {
        log(u"archives cannot be read now"_s);
        return UpdateFailure::Disk;
    }
    const auto unpacked = unpackArchive(std::move(*reader), change->newStagingFolder());
    if (const auto *failure = std::get_if<UnpackFailure>(&unpacked))
        return failureOf(*failure);
    const auto &update = std::get<UnpackedUpdate>(unpacked);
    // The signature of an old archive stays valid, so the version inside decides.
    const bool hasPrograms = Installation::hasPrograms(update.folder);
    if (!hasPrograms || update.version.text() != item.version.text() || !(update.version > m_installed)) {
        log(hasPrograms ? u"the archive contains version "_s + update.version.text()
                        : u"the archive contains no programs"_s);
        std::error_code ignored;
        std::filesystem::remove_all(update.folder.parent_path(), ignored);
        return UpdateFailure::Damaged;
    }
    if (!succeeded(change->stage(update.folder, update.version)))
        return UpdateFailure::Disk;
    return update.version;
}

UpdateVersion HomeInstaller::nextVersion() const
{
    const auto *installation = std::get_if<Installation>(&m_installation);
    return installation ? installation->current() : UpdateVersion();
}

bool HomeInstaller::isInstalled(const UpdateVersion &version) const
{
    const auto *installation = std::get_if<Installation>(&m_installation);
    return installation && Installation::hasPrograms(installation->folderOf(version));
}

bool HomeInstaller::activate(const UpdateVersion &version)
{
    std::optional<InstallationChange> change = begin();
    return change && succeeded(change->activate(version));
}

bool HomeInstaller::isOnTrial() const
{
    const auto *installation = std::get_if<Installation>(&m_installation);
    return installation && installation->trial().version.isValid();
}

void HomeInstaller::confirm()
{
    if (!isOnTrial())
        return;
    if (std::optional<InstallationChange> change = begin())
        succeeded(change->confirm());
}

UpdateVersion HomeInstaller::failedVersion() const
{
    const auto *installation = std::get_if<Installation>(&m_installation);
    return installation ? installation->failed() : UpdateVersion();
}

void HomeInstaller::forgetFailure()
{
    if (std::optional<InstallationChange> change = begin())
        succeeded(change->forgetFailure());
}
