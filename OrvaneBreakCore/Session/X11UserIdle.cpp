// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11UserIdle.h"

#include <xcb/screensaver.h>

#include <utility>

namespace {

xcb_window_t rootWindowOfServerWithExtension(const X11Client &client)
{
    const xcb_screen_t *screen = client.screen();
    if (!screen)
        return XCB_WINDOW_NONE;
    const xcb_query_extension_reply_t *extension =
        xcb_get_extension_data(client.connection(), &xcb_screensaver_id);
    return extension && extension->present != 0 ? screen->root : xcb_window_t(XCB_WINDOW_NONE);
}

} // namespace

X11UserIdle::X11UserIdle(X11Client client)
    : m_client(std::move(client))
    , m_rootWindow(rootWindowOfServerWithExtension(m_client))
{
}

InputIdleSeconds X11UserIdle::secondsSinceLastInput() const
{
    InputIdleSeconds seconds{};
    if (const auto milliseconds = millisecondsSinceInput())
        seconds.fill(*milliseconds / 1000.0);
    return seconds;
}

std::optional<std::uint32_t> X11UserIdle::millisecondsSinceInput() const
{
    if (!isOffered() || !m_client.isConnected())
        return std::nullopt;
    const auto cookie = xcb_screensaver_query_info(m_client.connection(), m_rootWindow);
    const auto reply =
        m_client.reply<xcb_screensaver_query_info_reply_t>(cookie.sequence, X11Client::usualDeadline());
    return reply ? std::optional(reply->ms_since_user_input) : std::nullopt;
}
