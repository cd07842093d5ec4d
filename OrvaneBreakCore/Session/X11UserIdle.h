// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "NativePointers.h"
#include "UserIdle.h"

#include <cstdint>
#include <optional>

/// The idle time as an X server counts it, from its screen-saver extension. It asks for no events on its
/// connection, so that input never wakes the program. All figures are 0 once the connection is lost, and when
/// the server does not answer within half a second; the latter is tried anew at the next call.
class X11UserIdle final : public UserIdle
{
public:
    /// Opens a connection of its own to the display named by DISPLAY.
    X11UserIdle();

    /// Takes over a connection as the X library returned it, also one in error.
    explicit X11UserIdle(XcbConnectionPointer connection);

    /// True when the server was reached and has the extension; otherwise all figures are 0 for good.
    [[nodiscard]] bool isOffered() const { return m_rootWindow != 0; }

    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override;

private:
    [[nodiscard]] std::optional<std::uint32_t> millisecondsSinceInput() const;

    XcbConnectionPointer m_connection;
    std::uint32_t m_rootWindow = 0;
};
