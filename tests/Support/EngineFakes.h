// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/BreakOverlay.h"
#include "Platform/Chime.h"
#include "Platform/UserIdle.h"

#include <QString>
#include <QStringList>

/// An idle measure that answers what the test says.
class FakeUserIdle final : public UserIdle
{
public:
    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override { return seconds; }
    void setAll(double value) { seconds.fill(value); }

    InputIdleSeconds seconds{};
};

/// A chime that remembers what it was asked to play.
class FakeChime final : public Chime
{
public:
    explicit FakeChime(QStringList &log)
        : m_log(log)
    {
    }
    void play(const QString &name) override { m_log.append(QStringLiteral("play ") + name); }

private:
    QStringList &m_log;
};

/// An overlay that writes down every call.
class FakeOverlay final : public BreakOverlay
{
public:
    explicit FakeOverlay(QStringList &log)
        : m_log(log)
    {
    }

    void show(int pauseSeconds) override
    {
        isShown = true;
        m_log.append(QStringLiteral("show %1").arg(pauseSeconds));
    }

    void update(double secondsLeft, double fraction) override
    {
        m_log.append(QStringLiteral("update %1 %2").arg(secondsLeft, 0, 'f', 3).arg(fraction, 0, 'f', 3));
    }

    void hide() override
    {
        isShown = false;
        m_log.append(QStringLiteral("hide"));
    }

    bool isShown = false;

private:
    QStringList &m_log;
};
