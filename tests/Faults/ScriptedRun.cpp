// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakEngine.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// The exit statuses when the break does not close, and when the window does not open.
constexpr int breakStayedStatus = 42;
constexpr int noWindowStatus = 43;

QWidgetList visibleWindows(const char *className)
{
    QWidgetList windows = QApplication::topLevelWidgets();
    windows.removeIf(
        [className](const QWidget *window) { return !window->isVisible() || !window->inherits(className); });
    return windows;
}

template <typename Button>
Button *buttonWith(const QString &text)
{
    for (const QWidget *window : visibleWindows("MainWindow")) {
        for (Button *button : window->findChildren<Button *>()) {
            if (button->text() == text)
                return button;
        }
    }
    return nullptr;
}

bool switchRemindersOn()
{
    auto *button = buttonWith<QPushButton>(u"Protéger mes yeux"_s);
    if (button)
        button->click();
    return button;
}

bool switchSoundOn()
{
    auto *box = buttonWith<QCheckBox>(u"Jouer un son doux au début de la pause"_s);
    if (box)
        box->setChecked(true);
    return box;
}

bool acceptMessage()
{
    for (QWidget *window : visibleWindows("QDialog")) {
        if (window->objectName() == "messageAlert"_L1) {
            qobject_cast<QDialog *>(window)->accept();
            return true;
        }
    }
    return false;
}

bool skipBreak()
{
    const QWidgetList panels = visibleWindows("BreakOverlayPanel");
    if (panels.isEmpty())
        return false;
    panels.constFirst()->findChild<QPushButton *>(u"skipButton"_s)->click();
    return true;
}

/// One step of a run, repeated until it returns true or times out.
struct Step
{
    std::function<bool()> isDone;
    qint64 timeoutMilliseconds = 2'000;
    std::function<void()> onTimeout = {};
};

/// Uses the program as a person does: reads the message, turns reminders on, changes a setting, skips a
/// break, and ends the session.
class ScriptedRun : public QObject
{
public:
    explicit ScriptedRun(QObject *parent)
        : QObject(parent)
        , m_steps{{[] { return !visibleWindows("MainWindow").isEmpty(); }, 10'000,
                   [] { std::_Exit(noWindowStatus); }},
                  {&acceptMessage},
                  {&switchRemindersOn},
                  {&switchSoundOn},
                  {[] {
                      BreakEngine::shared().breakNow();
                      return true;
                  }},
                  {[this] { return m_stepBegan.hasExpired(300); }},
                  {&skipBreak},
                  {[] { return visibleWindows("BreakOverlayPanel").isEmpty(); }, 2'000,
                   [] { std::_Exit(breakStayedStatus); }},
                  {[] { return std::raise(SIGTERM) == 0; }}}
    {
        m_stepBegan.start();
        connect(&m_timer, &QTimer::timeout, this, &ScriptedRun::proceed);
        m_timer.start(10ms);
    }

private:
    void proceed()
    {
        const Step &step = m_steps.at(m_next);
        if (!step.isDone()) {
            if (!m_stepBegan.hasExpired(step.timeoutMilliseconds))
                return;
            if (step.onTimeout)
                step.onTimeout();
        }
        m_stepBegan.restart();
        if (++m_next == m_steps.size())
            m_timer.stop();
    }

    std::vector<Step> m_steps;
    std::size_t m_next = 0;
    QElapsedTimer m_stepBegan;
    QTimer m_timer;
};

/// Starts the run if ORVANE_TEST_RUN is set.
void prepareRun()
{
    if (qEnvironmentVariableIsSet("ORVANE_TEST_RUN"))
        new ScriptedRun(QCoreApplication::instance());
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(prepareRun)
