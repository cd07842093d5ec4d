// SPDX-License-Identifier: GPL-3.0-or-later
// Waiting, suspends, locks and clock changes.
#include "Year.h"

#include <array>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int idleThreshold = 300;

QString text(Interval interval)
{
    return u"%1 s"_s.arg(std::chrono::duration<double>(interval).count());
}

Date date(int year, int month, int day)
{
    return std::chrono::sys_days(std::chrono::year(year) / month / day) + 3h + 14min + 7s;
}

} // namespace

void Year::pass(Interval interval)
{
    note(u"time passes: "_s + text(interval));
    m_app->pass(interval);
}

void Year::setClock(Interval change)
{
    note(u"the clock is set: "_s + text(change));
    m_clockError += change;
    m_app->jump(change);
}

void Year::setIdle(bool isAway)
{
    const double seconds = isAway ? idleThreshold + pick(50'000) : pick(idleThreshold * 10) / 10.0;
    m_app->userIdle.setAll(seconds);
    m_app->model.idleSeconds = seconds;
}

void Year::work()
{
    setIdle(false);
    pass(std::chrono::milliseconds(pick(600'000)));
}

void Year::glance()
{
    setIdle(false);
    pass(std::chrono::milliseconds(pick(10'000)));
}

void Year::beAway()
{
    setIdle(true);
    note(u"nobody is there"_s);
    pass(std::chrono::seconds(pick(7200)));
    setIdle(false);
}

void Year::suspend()
{
    const Interval length = std::chrono::seconds(pick(3) ? pick(600) : pick(15'000));
    note(u"the machine sleeps: "_s + text(length));
    setIdle(pick(2));
    m_app->jump(length);
}

void Year::lock()
{
    note(u"the session is locked"_s);
    m_app->lock();
    setIdle(pick(2));
    pass(std::chrono::seconds(pick(1200)));
    m_app->compare();
    m_app->unlock();
}

void Year::stepClock()
{
    if (pick(3) > 0) {
        static constexpr std::array<Interval, 10> steps{1s,     -1s, 59s, -61s, 10min,
                                                        -10min, 1h,  -1h, 24h,  -24h};
        setClock(steps.at(static_cast<std::size_t>(pick(static_cast<int>(steps.size())))));
        return;
    }
    static const std::array<Date, 5> dates{Date{} + 1s, date(1970, 2, 28), date(2038, 1, 19),
                                           date(2100, 2, 28), date(2100, 3, 1)};
    setClock(dates.at(static_cast<std::size_t>(pick(5))) - m_app->runLoop.now());
}

void Year::correctClock()
{
    if (m_clockError != Interval::zero())
        setClock(-m_clockError);
}

void Year::travel()
{
    static constexpr std::array zones{"CET-1CEST,M3.5.0,M10.5.0/3", "EST5EDT,M3.2.0,M11.1.0",
                                      "LHST-10:30LHDT-11,M10.1.0,M4.1.0", "NPT-5:45", "UTC0"};
    const char *zone = zones.at(static_cast<std::size_t>(pick(static_cast<int>(zones.size()))));
    note(u"travel: "_s + QString::fromLatin1(zone));
    qputenv("TZ", zone);
}
