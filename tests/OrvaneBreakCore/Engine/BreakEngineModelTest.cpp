// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakEngine.h"
#include "Support/EngineFakes.h"
#include "Support/EngineModel.h"
#include "Support/ManualRunLoop.h"
#include "Support/MemoryPreferences.h"
#include "Support/TestProgram.h"
#include "Support/TestSeed.h"

#include <QTest>

#include <algorithm>
#include <random>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class RecordingOverlay final : public BreakOverlay
{
public:
    explicit RecordingOverlay(std::vector<Effect> &effects)
        : m_effects(effects)
    {
    }
    void show(int pauseSeconds) override
    {
        m_effects.push_back({Effect::Kind::Show, static_cast<double>(pauseSeconds)});
    }
    void update(double secondsLeft, double fraction) override
    {
        m_effects.push_back({Effect::Kind::Update, secondsLeft, fraction});
    }
    void hide() override { m_effects.push_back({Effect::Kind::Hide}); }

private:
    std::vector<Effect> &m_effects;
};

class RecordingChime final : public Chime
{
public:
    explicit RecordingChime(std::vector<Effect> &effects)
        : m_effects(effects)
    {
    }
    void play(const QString & /*name*/) override { m_effects.push_back({Effect::Kind::Play}); }

private:
    std::vector<Effect> &m_effects;
};

/// The engine and the model side by side, driven by the same random operations.
class Comparison
{
public:
    explicit Comparison(std::uint32_t seed)
        : m_random(seed)
    {
        m_model.now = m_runLoop.now();
        m_engine.onChange = [this] { m_effects.push_back({Effect::Kind::Change}); };
    }

    void step()
    {
        m_effects.clear();
        m_model.effects.clear();
        const int choice = pick(100);
        if (m_quietSteps > 0)
            passTimeQuietly();
        else if (m_model.state() == EngineModel::State::Break && pick(50) == 0)
            m_quietSteps = 12;
        else if (choice < 40)
            passTime(choice);
        else if (choice < 60)
            changeEnvironment(choice);
        else
            operate(choice);
    }

    /// Empty when everything observable is the same.
    [[nodiscard]] QString difference() const
    {
        if (m_engine.isActive() != m_model.isActive())
            return u"isActive"_s;
        if (m_engine.isOnBreak() != m_model.isOnBreak())
            return u"isOnBreak"_s;
        if (m_engine.nextBreakDate() != m_model.nextBreakDate())
            return u"nextBreakDate"_s;
        if (observedTimers() != m_model.timers())
            return u"timers"_s;
        if (m_effects != m_model.effects)
            return u"callbacks and calls on the overlay"_s;
        return {};
    }

    [[nodiscard]] const EngineModel &model() const { return m_model; }

private:
    int pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_random); }

    void passTime(int choice)
    {
        Interval interval = std::chrono::milliseconds(pick(1500));
        if (choice < 8)
            interval = std::chrono::milliseconds(pick(25'000));
        else if (choice == 8)
            interval = std::chrono::seconds(pick(3000));
        if (choice > 36) {
            // A clock change or a suspend. The clock is rarely set back by more than a minute, because a
            // running break would last that much longer.
            const std::array<Interval, 6> jumps{500ms, 45s, 8h, -1s, -45s, pick(20) ? 10min : -25min};
            interval = jumps.at(static_cast<std::size_t>(pick(6)));
            m_runLoop.jump(interval);
            m_model.jump(interval);
            return;
        }
        m_runLoop.advance(interval);
        m_model.advance(interval);
    }

    /// Sets the clock back during a break, switches reminders on and then only lets time pass: the way for a
    /// break to come due while another is still showing.
    void passTimeQuietly()
    {
        const bool isFirst = m_quietSteps-- == 12;
        const Interval interval =
            isFirst ? Interval(-2h) : Interval(std::chrono::milliseconds(pick(600'000)));
        m_runLoop.jump(interval);
        m_model.jump(interval);
        if (isFirst) {
            m_engine.start();
            m_model.apply(EngineModel::Event::Start);
        }
    }

    void changeEnvironment(int choice)
    {
        // Pairs of what is stored and what it reads as.
        static const std::array<std::pair<QJsonValue, int>, 8> intervals{
            {{10, 10}, {20, 20}, {30, 30}, {45, 45}, {15, 20}, {u"10"_s, 20}, {10.5, 20}, {-10, 20}}};
        static const std::array<std::pair<QJsonValue, int>, 6> pauses{
            {{20, 20}, {30, 30}, {60, 60}, {45, 20}, {true, 20}, {QJsonValue::Undefined, 20}}};
        static const std::array<double, 5> idles{0, 299.9, 300, 5000, 3};
        if (choice < 45) {
            const auto &[stored, effective] = intervals.at(static_cast<std::size_t>(pick(8)));
            m_preferences.setValue(u"OBIntervalMinutes"_s, stored);
            m_model.intervalMinutes = effective;
        } else if (choice < 50) {
            const auto &[stored, effective] = pauses.at(static_cast<std::size_t>(pick(6)));
            m_preferences.setValue(u"OBPauseSeconds"_s, stored);
            m_model.pauseSeconds = effective;
        } else if (choice < 53) {
            m_model.soundEnabled = pick(2) == 1;
            m_preferences.setValue(u"OBSoundEnabled"_s, m_model.soundEnabled);
        } else {
            m_model.idleSeconds = idles.at(static_cast<std::size_t>(pick(5)));
            m_userIdle.setAll(m_model.idleSeconds);
        }
    }

    void operate(int choice)
    {
        using Event = EngineModel::Event;
        if (choice < 70) {
            m_engine.start();
            m_model.apply(Event::Start);
        } else if (choice < 73) {
            m_engine.stop();
            m_model.apply(Event::Stop);
        } else if (choice < 80) {
            m_engine.breakNow();
            m_model.apply(Event::BreakNow);
        } else if (choice < 86) {
            static const std::array<int, 5> minutes{10, 0, -3, 1, 600};
            const int chosen = minutes.at(static_cast<std::size_t>(pick(5)));
            m_engine.postpone(chosen);
            m_model.apply(Event::Postpone, chosen);
        } else if (choice < 96) {
            m_engine.rescheduleFromSettings();
            m_model.apply(Event::Reschedule);
        } else {
            m_overlay->onSkip();
            m_model.apply(Event::Skip);
        }
    }

    [[nodiscard]] std::vector<ObservedTimer> observedTimers() const
    {
        std::vector<ObservedTimer> result;
        for (const auto &entry : m_runLoop.timers())
            result.push_back({entry.due, entry.interval, entry.tolerance});
        std::sort(result.begin(), result.end());
        return result;
    }

    std::mt19937 m_random;
    int m_quietSteps = 0;
    EngineModel m_model;
    std::vector<Effect> m_effects;
    ManualRunLoop m_runLoop;
    MemoryPreferences m_preferences;
    FakeUserIdle m_userIdle;
    RecordingChime m_chime{m_effects};
    RecordingOverlay *m_overlay = new RecordingOverlay(m_effects); // owned by the engine
    BreakEngine m_engine{
        {m_runLoop, m_preferences, m_userIdle, m_chime, std::unique_ptr<BreakOverlay>(m_overlay)}};
};

} // namespace

class BreakEngineModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aMillionRandomOperations()
    {
        Comparison comparison(testSeed());
        for (int operation = 0; operation < 1'000'000; ++operation) {
            comparison.step();
            const QString difference = comparison.difference();
            if (!difference.isEmpty())
                QFAIL(qPrintable(u"operation %1: %2 differ"_s.arg(operation).arg(difference)));
        }
        // A transition that never happened was not compared.
        const std::vector<int> &counts = comparison.model().transitionCounts();
        for (std::size_t row = 0; row < counts.size(); ++row)
            QVERIFY2(counts.at(row) > 20, EngineModel::transitionName(row).c_str());
    }
};

ORVANE_TEST(BreakEngineModelTest, TestProgram::NoApplication)
#include "BreakEngineModelTest.moc"
