// SPDX-License-Identifier: GPL-3.0-or-later
#include "XcbReply.h"

#include <time.h>

#include <sstream>
#include <vector>

PixelRectangle parseRectangle(const std::string &text)
{
    std::istringstream stream(text);
    std::vector<int> numbers;
    for (std::string part; std::getline(stream, part, ',');)
        numbers.push_back(std::stoi(part));
    PixelRectangle area;
    area.x = static_cast<std::int16_t>(numbers.at(0));
    area.y = static_cast<std::int16_t>(numbers.at(1));
    if (numbers.size() > 2) {
        area.width = static_cast<std::uint16_t>(numbers.at(2));
        area.height = static_cast<std::uint16_t>(numbers.at(3));
    }
    return area;
}

std::int64_t monotonicNanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

xcb_window_t rootWindow(xcb_connection_t *connection)
{
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

xcb_atom_t atomNamed(xcb_connection_t *connection, std::string_view name)
{
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}
