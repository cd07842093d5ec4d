// SPDX-License-Identifier: GPL-3.0-or-later
#include "Year.h"

#include "Support/MessagesFixture.h"

#include <QCheckBox>
#include <QTimeZone>

#include <array>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int daysInAYear = 365;
constexpr int maxOperationsPerDay = 14;
constexpr std::size_t rememberedOperations = 40;

} // namespace

Year::Year(std::uint32_t seed)
    : m_random(seed)
{
    qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
}

void Year::run()
{
    launch();
    for (int day = 0; day < daysInAYear && !hasFailed(); ++day) {
        const int operations = pick(maxOperationsPerDay);
        for (int count = 0; count < operations && !hasFailed(); ++count)
            step();
        if (!hasFailed())
            sleepUntilMorning();
    }
    if (!hasFailed())
        relaunch();
    if (!hasFailed())
        quit();
}

QStringList Year::report() const
{
    if (!hasFailed())
        return {};
    QStringList lines{u"operation %1: "_s.arg(m_operation) +
                      (m_failure.isEmpty() ? m_app->difference() : m_failure)};
    for (const QString &line : m_story)
        lines << u"    "_s + line;
    return lines;
}

void Year::launch()
{
    note(u"the program starts"_s);
    m_conversation.forget();
    m_inDialog.reset();
    m_app = std::make_unique<ComparedApplication>(m_kept);
    // By then the timeout for a tray has passed.
    pass(10s);
    comeToRest();
    m_resourcesAtLaunch = Resources::ofTheProcess();
}

void Year::quit()
{
    note(u"the program ends"_s);
    comeToRest();
    const QString kept = Resources::difference(m_resourcesAtLaunch, Resources::ofTheProcess());
    if (!kept.isEmpty())
        fail(u"resources: "_s + kept);
    if (timerLines(m_app->runLoop) != QStringList{u"every 3600 ±60"_s})
        fail(u"timers: %1"_s.arg(timerLines(m_app->runLoop).join(u", "_s)));
    m_app->delegate.applicationWillTerminate();
    m_app->tell(EngineModel::Event::Stop);
    compareConversation();
    if (hasFailed())
        return;
    const std::vector<int> &transitions = m_app->model.transitionCounts();
    for (std::size_t row = 0; row < transitions.size(); ++row)
        m_tally[QString::fromStdString(EngineModel::transitionName(row))] += transitions.at(row);
    m_kept = m_app->kept();
    m_kept.now += std::chrono::seconds(pick(100'000));
    m_app.reset();
    settle();
    const Resources::Counts resources = Resources::ofTheProcess();
    const QString leftBehind =
        Resources::difference(m_resourcesWithoutProgram.value_or(resources), resources);
    if (!leftBehind.isEmpty())
        fail(u"left behind: "_s + leftBehind);
    m_resourcesWithoutProgram = resources;
}

void Year::comeToRest()
{
    m_app->unlock();
    correctClock();
    if (m_app->model.isOnBreak())
        endBreak();
    if (m_app->model.isActive())
        toggleReminders();
    if (m_app->isMenuBarMode)
        changeMode();
    auto *updates = m_app->find<QCheckBox>(u"autoUpdatesCheckbox"_s);
    // Turns both settings off; the box shows only one of them.
    updates->setChecked(true);
    updates->setChecked(false);
    do {
        answerRequests();
        answerDialog();
        settle();
    } while (!m_app->http.requests.isEmpty() || m_app->alerts.isBusy());
    if (m_conversation.pending)
        readMessages();
    // With an empty conversation the window always has the same widgets.
    const QJsonObject stored = m_app->preferences.stored;
    m_app->preferences.stored.remove(u"OBMessageHistory"_s);
    m_app->delegate.showMessages();
    m_app->window(u"messagesWindow"_s)->close();
    m_app->preferences.stored = stored;
    m_app->delegate.showMain();
    m_app->delegate.showMainWindow();
    settle();
}

void Year::step()
{
    static constexpr std::array operations{
        Operation{20, &Year::work},
        Operation{12, &Year::glance},
        Operation{3, &Year::beAway},
        Operation{6, &Year::suspend},
        Operation{3, &Year::lock},
        Operation{2, &Year::stepClock},
        Operation{8, &Year::correctClock},
        Operation{1, &Year::travel},
        Operation{6, &Year::toggleReminders},
        Operation{5, &Year::takeBreak},
        Operation{4, &Year::postpone},
        Operation{12, &Year::endBreak},
        Operation{3, &Year::chooseInterval},
        Operation{2, &Year::choosePause},
        Operation{2, &Year::chooseSound},
        Operation{1, &Year::editPreferences},
        Operation{2, &Year::changeMode},
        Operation{1, &Year::toggleUpdates},
        Operation{2, &Year::turnPage},
        Operation{3, &Year::openWindow},
        Operation{2, &Year::closeWindow},
        Operation{1, &Year::readMessages},
        Operation{2, &Year::closeMessages},
        Operation{1, &Year::writeReply},
        Operation{1, &Year::reportProblem},
        Operation{1, &Year::searchUpdates},
        Operation{8, &Year::answerDialog},
    };
    int sum = 0;
    for (const Operation &operation : operations)
        sum += operation.weight;
    int choice = pick(sum);
    const Operation *chosen = operations.data();
    while (choice >= chosen->weight)
        choice -= (chosen++)->weight;
    ++m_operation;
    (this->*chosen->run)();
    // Some answers arrive after later operations.
    if (pick(5) > 0)
        answerRequests();
    settle();
    if (!hasFailed())
        m_app->compare();
}

void Year::sleepUntilMorning()
{
    note(u"the night"_s);
    m_app->unlock();
    setIdle(pick(8) > 0);
    m_app->jump(std::chrono::seconds(7 * 3600 + pick(7 * 3600)));
    answerRequests();
    QCoreApplication::processEvents();
    settle();
    m_app->compare();
    compareConversation();
}

void Year::settle()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    if (!m_app)
        return;
    m_app->surface.log.clear();
    m_app->presence.log.clear();
    // A message that has waited for another dialog comes with the end of that.
    const QDialog *dialog = Launched::dialog();
    if (dialog && dialog->objectName() == "messageAlert"_L1 && !m_inDialog)
        m_inDialog = m_conversation.pending;
}

void Year::note(const QString &what)
{
    ++m_tally[what.section(u':', 0, 0)];
    m_story.push_back((m_app ? clock().toString(Qt::ISODate) + u' ' : QString()) + what);
    if (m_story.size() > rememberedOperations)
        m_story.pop_front();
}

void Year::fail(const QString &what)
{
    if (m_failure.isEmpty())
        m_failure = what;
}

bool Year::hasFailed() const
{
    return !m_failure.isEmpty() || (m_app && !m_app->difference().isEmpty());
}

int Year::pick(int count)
{
    return std::uniform_int_distribution<int>(0, count - 1)(m_random);
}

QDateTime Year::clock() const
{
    const auto milliseconds =
        std::chrono::floor<std::chrono::milliseconds>(m_app->runLoop.now().time_since_epoch());
    return QDateTime::fromMSecsSinceEpoch(milliseconds.count(), QTimeZone::utc());
}
