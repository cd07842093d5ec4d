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

/// A year in the life of somebody who does anything with the program, and of a machine that sleeps, is locked
/// and has its clock set. One seed makes the same year each time.
class Year
{
public:
    explicit Year(std::uint32_t seed);

    /// Lives the year, or as much of it as goes well.
    void live();

    /// What went wrong, with the last operations before it; empty when nothing did.
    [[nodiscard]] QStringList report() const;

    /// How often each thing was done or happened.
    [[nodiscard]] const QMap<QString, int> &tally() const { return m_tally; }

private:
    struct Operation
    {
        int weight;
        void (Year::*run)();
    };

    // The course of the year.
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

    // What time brings.
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

    // What the user does.
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

    // What passes between the user and the makers.
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
    ComparedApplication::Kept m_kept; ///< By the run of the program before.
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
