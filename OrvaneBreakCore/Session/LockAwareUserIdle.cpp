// SPDX-License-Identifier: GPL-3.0-or-later
#include "LockAwareUserIdle.h"

#include <limits>
#include <utility>

LockAwareUserIdle::LockAwareUserIdle(const UserIdle &source, std::function<bool()> isLocked)
    : m_source(source)
    , m_isLocked(std::move(isLocked))
{
}

InputIdleSeconds LockAwareUserIdle::secondsSinceLastInput() const
{
    if (!m_isLocked())
        return m_source.secondsSinceLastInput();
    InputIdleSeconds seconds{};
    seconds.fill(std::numeric_limits<double>::infinity());
    return seconds;
}
