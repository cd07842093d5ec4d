// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BreakOverlay.h"
#include "Chime.h"
#include "UserIdle.h"

#include <QString>
#include <QStringList>

/// Reports the idle times that the test sets.
class FakeUserIdle final : public UserIdle
{
public:
    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override { return seconds; }
    void setAll(double value) { seconds.fill(value); }

    InputIdleSeconds seconds{};
};

/// Logs the sounds that it is asked to play.
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

/// Logs every call and forwards it to `next`, if a test sets that.
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
        if (next)
            next->show(pauseSeconds);
    }

    void update(double secondsLeft, double fraction) override
    {
        m_log.append(QStringLiteral("update %1 %2").arg(secondsLeft, 0, 'f', 3).arg(fraction, 0, 'f', 3));
        if (next)
            next->update(secondsLeft, fraction);
    }

    void hide() override
    {
        isShown = false;
        m_log.append(QStringLiteral("hide"));
        if (next)
            next->hide();
    }

    bool isShown = false;
    BreakOverlay *next = nullptr;

private:
    QStringList &m_log;
};
