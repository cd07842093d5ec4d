// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RunLoop.h"

/// A clock that only the test moves; no timer is ever scheduled on it.
class SettableClock final : public RunLoop
{
public:
    [[nodiscard]] Date now() const override { return m_now; }
    void pass(Interval interval) { m_now += interval; }

protected:
    void scheduleChanged() override {}

private:
    // Nothing may depend on this date.
    Date m_now{std::chrono::seconds(1'000'000)};
};
