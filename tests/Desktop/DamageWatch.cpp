// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScreenProbe.h"

#include <poll.h>
#include <xcb/damage.h>

#include <cinttypes>
#include <cstdio>
#include <map>

namespace {

using WindowOfDamage = std::map<xcb_damage_damage_t, xcb_window_t>;

/// Prints the events that have arrived. Raw rectangles: each drawing operation is reported by itself, nothing
/// is merged and nothing needs to be acknowledged.
void printDamage(xcb_connection_t *connection, const WindowOfDamage &watched, std::uint8_t damageEvent)
{
    while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection)}) {
        if ((event->response_type & 0x7fU) != damageEvent)
            continue;
        const auto *damage = reinterpret_cast<const xcb_damage_notify_event_t *>(event.get());
        const auto found = watched.find(damage->damage);
        if (found == watched.end())
            continue;
        std::printf("%" PRId64 " %u %d %d %u %u\n", monotonicNanoseconds(), found->second, damage->area.x,
                    damage->area.y, damage->area.width, damage->area.height);
    }
    std::fflush(stdout);
}

} // namespace

void watchDamage(xcb_connection_t *connection, const std::vector<xcb_window_t> &windows,
                 int durationMilliseconds)
{
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(connection, &xcb_damage_id);
    if (extension == nullptr || extension->present == 0) {
        std::fputs("screen-probe: the X server has no damage extension\n", stderr);
        return;
    }
    const XcbReply<xcb_damage_query_version_reply_t> version(xcb_damage_query_version_reply(
        connection, xcb_damage_query_version(connection, XCB_DAMAGE_MAJOR_VERSION, XCB_DAMAGE_MINOR_VERSION),
        nullptr));
    WindowOfDamage watched;
    for (const xcb_window_t window : windows) {
        const xcb_damage_damage_t damage = xcb_generate_id(connection);
        xcb_damage_create(connection, damage, window, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        watched[damage] = window;
    }
    // The answer to any request proves that the server has seen those before it. What it reported until then
    // is the whole of each window, as the state at the beginning.
    const XcbReply<xcb_get_input_focus_reply_t> barrier(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    while (const XcbReply<xcb_generic_event_t> atStart{xcb_poll_for_event(connection)}) {
    }
    std::puts("ready");
    std::fflush(stdout);

    const std::int64_t end = monotonicNanoseconds() + std::int64_t{durationMilliseconds} * 1'000'000;
    while (xcb_connection_has_error(connection) == 0) {
        printDamage(connection, watched,
                    static_cast<std::uint8_t>(extension->first_event + XCB_DAMAGE_NOTIFY));
        const std::int64_t left = (end - monotonicNanoseconds()) / 1'000'000;
        if (left <= 0)
            return;
        pollfd socket{xcb_get_file_descriptor(connection), POLLIN, 0};
        poll(&socket, 1, static_cast<int>(left));
    }
}
