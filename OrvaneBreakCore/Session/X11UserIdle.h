// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "NativePointers.h"
#include "UserIdle.h"
#include "X11Client.h"

#include <cstdint>
#include <optional>

/// The idle time as an X server counts it, from its screen-saver extension. All figures are 0 once the
/// connection is lost, and when the server does not answer within half a second; the next call asks again.
class X11UserIdle final : public UserIdle
{
public:
    explicit X11UserIdle(X11Client client = X11Client::toDisplay());

    /// True if the server was reached and has the extension; otherwise all figures are always 0.
    [[nodiscard]] bool isOffered() const { return m_rootWindow != XCB_WINDOW_NONE; }

    [[nodiscard]] InputIdleSeconds secondsSinceLastInput() const override;

private:
    [[nodiscard]] std::optional<std::uint32_t> millisecondsSinceInput() const;

    X11Client m_client;
    xcb_window_t m_rootWindow;
};
