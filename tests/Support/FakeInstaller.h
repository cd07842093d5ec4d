// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdateInstaller.h"

#include <QPointer>
#include <QStringList>

#include <utility>

/// Logs its calls; the test ends each preparation.
class FakeInstaller final : public UpdateInstaller
{
public:
    [[nodiscard]] Ability ability() const override { return currentAbility; }

    void prepare(const QByteArray &archive, const AppcastItem &item, QObject &context,
                 Completion completion) override
    {
        log.append(QStringLiteral("prepare %1 %2").arg(item.version.text(), QString::fromLatin1(archive)));
        m_context = &context;
        m_completion = std::move(completion);
    }

    /// Ends the current preparation.
    void finish(std::optional<UpdateFailure> failure = std::nullopt)
    {
        if (m_context)
            std::exchange(m_completion, nullptr)(failure);
    }

    bool activate(const UpdateVersion &version) override
    {
        log.append(QStringLiteral("activate ") + version.text());
        return true;
    }

    [[nodiscard]] bool isOnTrial() const override { return isTrying; }

    void confirm() override
    {
        if (std::exchange(isTrying, false))
            log.append(QStringLiteral("confirm"));
    }

    bool isTrying = false;
    Ability currentAbility = Ability::Itself;
    QStringList log;

private:
    QPointer<QObject> m_context;
    Completion m_completion;
};
