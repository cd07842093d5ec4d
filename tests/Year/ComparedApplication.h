// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BreakOverlayController.h"
#include "LockAwareOverlay.h"
#include "Support/ApplicationFixture.h"
#include "Support/EngineModel.h"
#include "Support/FakeOverlaySurface.h"

/// The launched application with a real break screen, and a model of its engine. Both get the same
/// operations, and every wake-up compares them.
class ComparedApplication final : public ApplicationFixture
{
public:
    /// The state that outlives a run of the program.
    struct Kept
    {
        Date now{std::chrono::seconds(1'790'000'000)};
        QJsonObject preferences{{QStringLiteral("OBOnboarded"), true}};
        QJsonObject updates;
        int intervalMinutes = 20;
        int pauseSeconds = 20;
        bool soundEnabled = false;
        bool isMenuBarMode = false;
    };

    explicit ComparedApplication(const Kept &kept);
    ~ComparedApplication();

    [[nodiscard]] Kept kept() const;

    /// Advances the clock, one wake-up after the other.
    void pass(Interval interval);

    /// Sets the clock or ends a suspend.
    void jump(Interval interval);

    /// Applies to the model what was done to the engine.
    void tell(EngineModel::Event event, int minutes = 0);

    /// Locks the session: the next update hides the break screen.
    void lock() { m_isLocked = true; }
    void unlock() { m_isLocked = false; }
    [[nodiscard]] bool isLocked() const { return m_isLocked; }

    /// Compares everything visible with the model.
    void compare();

    /// The first difference, or empty.
    [[nodiscard]] const QString &difference() const { return m_difference; }
    void differ(const QString &what);

    /// The panel that has the keyboard, null without a break screen.
    [[nodiscard]] QWidget *panel() const { return surface.panels.empty() ? nullptr : surface.panels.front(); }

    EngineModel model;
    FakeOverlaySurface surface;
    bool isMenuBarMode = false;

private:
    void compareEngines();
    void compareScreens();
    void compareTexts();
    void compareTimers();
    void noteBreak(const QStringList &effects);
    [[nodiscard]] std::vector<ObservedTimer> observed(bool ofTheEngine) const;

    bool m_isLocked = false;
    bool m_isCovered = false;
    Interval m_breakLasted{};
    Interval m_breakLength{};
    bool m_wasClockSetBack = false;
    QString m_difference;
    LockAwareOverlay m_screens{std::make_unique<BreakOverlayController>(surface, &QGuiApplication::screens),
                               [this] { return m_isLocked; }};
};
