// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdateInstaller.h"

#include <QPointer>
#include <QStringList>

#include <utility>

/// Logs the calls, and finishes prepare() when the test says so.
class FakeInstaller final : public UpdateInstaller
{
public:
    [[nodiscard]] Ability ability() const override { return currentAbility; }

    void prepare(const QByteArray &archive, const AppcastItem &item, QObject &context,
                 Completion completion) override
    {
        log.append(QStringLiteral("prepare %1 %2").arg(item.version.text(), QString::fromLatin1(archive)));
        m_version = item.version;
        m_context = &context;
        m_completion = std::move(completion);
    }

    /// Finishes the current prepare().
    void finish() { finish(m_version); }
    void finish(const Result &result)
    {
        if (m_context)
            std::exchange(m_completion, nullptr)(result);
    }

    [[nodiscard]] UpdateVersion nextVersion() const override { return next; }
    [[nodiscard]] bool isInstalled(const UpdateVersion &version) const override
    {
        return installed == version;
    }

    bool activate(const UpdateVersion &version) override
    {
        log.append(QStringLiteral("activate ") + version.text());
        if (!isRefusing)
            next = version;
        return !isRefusing;
    }

    [[nodiscard]] bool isOnTrial() const override { return isTrying; }

    void confirm() override
    {
        if (std::exchange(isTrying, false))
            log.append(QStringLiteral("confirm"));
    }

    [[nodiscard]] UpdateVersion failedVersion() const override { return failed; }
    void forgetFailure() override { failed = UpdateVersion(); }

    bool isTrying = false;
    bool isRefusing = false; ///< activate() fails.
    UpdateVersion installed; ///< Beside the running version.
    UpdateVersion failed;
    UpdateVersion next; ///< The version that is current.
    Ability currentAbility = Ability::Itself;
    QStringList log;

private:
    UpdateVersion m_version;
    QPointer<QObject> m_context;
    Completion m_completion;
};
