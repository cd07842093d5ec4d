// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScreenProbe.h"

#include <cstdio>
#include <exception>
#include <string>

namespace {

constexpr const char *usage = "usage: screen-probe state\n"
                              "       screen-probe sample DURATION-MS INTERVAL-MS X,Y[,WIDTH,HEIGHT]...\n"
                              "       screen-probe damage DURATION-MS WINDOW...\n";

bool runCommand(xcb_connection_t *connection, const std::vector<std::string> &words)
{
    if (words.size() == 1 && words[0] == "state") {
        printDesktopState(connection);
        return true;
    }
    if (words.size() > 3 && words[0] == "sample") {
        std::vector<PixelRectangle> areas;
        for (std::size_t index = 3; index < words.size(); ++index)
            areas.push_back(parseRectangle(words[index]));
        sampleScreen(connection, areas, std::stoi(words[1]), std::stoi(words[2]));
        return true;
    }
    if (words.size() > 2 && words[0] == "damage") {
        std::vector<xcb_window_t> windows;
        for (std::size_t index = 2; index < words.size(); ++index)
            windows.push_back(static_cast<xcb_window_t>(std::stoul(words[index])));
        watchDamage(connection, windows, std::stoi(words[1]));
        return true;
    }
    return false;
}

} // namespace

int main(int argc, char **argv)
{
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection) != 0) {
        std::fputs("screen-probe: no X server\n", stderr);
        xcb_disconnect(connection);
        return 1;
    }
    bool isUnderstood = false;
    try {
        isUnderstood = runCommand(connection, {argv + 1, argv + argc});
    } catch (const std::exception &problem) {
        std::fprintf(stderr, "screen-probe: %s\n", problem.what());
    }
    if (!isUnderstood)
        std::fputs(usage, stderr);
    xcb_disconnect(connection);
    return isUnderstood ? 0 : 2;
}
