// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ComparedApplication.h"
#include "Conversation.h"
#include "Makers.h"
#include "Resources.h"

#include <deque>
#include <memory>
#include <random>

class QDialog;

/// A simulated year: random operations of a user, on a machine that is suspended and locked and whose clock
/// is set. The same seed gives the same year.
class Year
{
public:
    explicit Year(std::uint32_t seed);

    /// Runs the year up to the first failure.
    void run();

    /// The failure and the last operations before it; empty if there is none.
    [[nodiscard]] QStringList report() const;

    /// How often each operation and each event occurred.
    [[nodiscard]] const QMap<QString, int> &tally() const { return m_tally; }

private:
    struct Operation
    {
        int weight;
        void (Year::*run)();
    };

    void launch();
    void quit();
    void comeToRest();
    void step();
    void sleepUntilMorning();
    void settle();
    void note(const QString &what);
    void fail(const QString &what);
    [[nodiscard]] bool hasFailed() const;
    [[nodiscard]] int pick(int count);
    [[nodiscard]] Date trueNow() const { return m_app->runLoop.now() - m_clockError; }
    [[nodiscard]] QDateTime clock() const;

    // The machine.
    void work();
    void glance();
    void beAway();
    void suspend();
    void lock();
    void stepClock();
    void correctClock();
    void travel();
    void setIdle(bool isAway);
    void pass(Interval interval);
    void setClock(Interval change);

    // The user.
    void toggleReminders();
    void takeBreak();
    void postpone();
    void endBreak();
    void chooseInterval();
    void choosePause();
    void chooseSound();
    void editPreferences();
    void changeMode();
    void toggleUpdates();
    void turnPage();
    void openWindow();
    void closeWindow();
    void relaunch();

    // The user and the makers.
    void readMessages();
    void closeMessages();
    void writeReply();
    void reportProblem();
    void searchUpdates();
    void answerDialog();
    void answerDialog(QDialog &dialog);
    void answerRequests();
    void answerCheckIn();
    void compareConversation();
    void compareHeader();

    std::mt19937 m_random;
    ComparedApplication::Kept m_kept; ///< By the previous run of the program.
    std::unique_ptr<ComparedApplication> m_app;
    Makers m_makers;
    Conversation m_conversation;
    std::optional<ServerMessage> m_inDialog; ///< The message that a dialog shows.
    Interval m_clockError{};                 ///< By how much the clock is fast.
    Resources::Counts m_resourcesAtLaunch;
    std::optional<Resources::Counts> m_resourcesWithoutProgram;
    int m_operation = 0;
    QString m_failure;
    std::deque<QString> m_story;
    QMap<QString, int> m_tally;
};
