// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UserIdle.h"

#include <functional>

/// The idle time of a session that may be locked. While it is locked nobody uses it, so the last input of
/// every kind is infinitely long ago, whatever is typed into the lock screen. Otherwise the figures are those
/// of the source.
class LockAwareUserIdle final : public UserIdle
{
public:
    /// `source` outlives this object. `isLocked` is asked for every figure.
    LockAwareUserIdle(const UserIdle &source, std::function<bool()> isLocked);

    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override;

private:
    const UserIdle &m_source;
    std::function<bool()> m_isLocked;
};
