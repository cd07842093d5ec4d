// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScreenProbe.h"

#include <time.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <span>

namespace {

constexpr std::uint64_t unknownValue = ~std::uint64_t{0};
constexpr std::uint64_t hashStart = 0xcbf29ce484222325U;
constexpr std::uint64_t hashFactor = 0x100000001b3U;

/// The colour of one pixel, or a hash of several. The fourth byte of each pixel has no meaning on the root
/// window.
std::uint64_t valueOf(const xcb_get_image_reply_t *reply)
{
    if (reply == nullptr)
        return unknownValue;
    const std::span<const std::uint8_t> bytes(xcb_get_image_data(reply),
                                              static_cast<std::size_t>(xcb_get_image_data_length(reply)));
    const auto colourAt = [bytes](std::size_t index) {
        return (std::uint64_t{bytes[index + 2]} << 16U) | (std::uint64_t{bytes[index + 1]} << 8U) |
               bytes[index];
    };
    if (bytes.size() == 4)
        return colourAt(0);
    std::uint64_t hash = hashStart;
    for (std::size_t index = 0; index + 3 < bytes.size(); index += 4)
        hash = (hash ^ colourAt(index)) * hashFactor;
    return hash;
}

/// Asks for all areas before it waits for the first answer: one round trip however many there are.
std::vector<std::uint64_t> lookAt(xcb_connection_t *connection, const std::vector<PixelRectangle> &areas)
{
    constexpr std::uint32_t allPlanes = ~std::uint32_t{0};
    std::vector<xcb_get_image_cookie_t> cookies;
    cookies.reserve(areas.size());
    for (const PixelRectangle &area : areas) {
        cookies.push_back(xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, rootWindow(connection), area.x,
                                        area.y, area.width, area.height, allPlanes));
    }
    std::vector<std::uint64_t> values;
    values.reserve(areas.size());
    for (const xcb_get_image_cookie_t cookie : cookies) {
        xcb_generic_error_t *error = nullptr;
        const XcbReply<xcb_get_image_reply_t> reply(xcb_get_image_reply(connection, cookie, &error));
        std::free(error);
        values.push_back(valueOf(reply.get()));
    }
    return values;
}

void sleepUntil(std::int64_t nanoseconds)
{
    constexpr std::int64_t perSecond = 1'000'000'000;
    const timespec moment{nanoseconds / perSecond, nanoseconds % perSecond};
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &moment, nullptr);
}

} // namespace

void sampleScreen(xcb_connection_t *connection, const std::vector<PixelRectangle> &areas,
                  int durationMilliseconds, int intervalMilliseconds)
{
    constexpr std::int64_t perMillisecond = 1'000'000;
    std::vector<std::uint64_t> known(areas.size(), unknownValue - 1);
    const std::int64_t end = monotonicNanoseconds() + durationMilliseconds * perMillisecond;
    bool isFirst = true;
    std::int64_t next = monotonicNanoseconds();
    while (monotonicNanoseconds() < end && xcb_connection_has_error(connection) == 0) {
        const std::vector<std::uint64_t> seen = lookAt(connection, areas);
        const std::int64_t now = monotonicNanoseconds();
        for (std::size_t index = 0; index < areas.size(); ++index) {
            if (seen[index] != known[index])
                std::printf("%" PRId64 " %zu %06" PRIx64 "\n", now, index, seen[index]);
        }
        known = seen;
        if (isFirst)
            std::puts("ready");
        isFirst = false;
        std::fflush(stdout);
        next = std::max(next + intervalMilliseconds * perMillisecond, now);
        sleepUntil(next);
    }
}
