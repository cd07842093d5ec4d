// SPDX-License-Identifier: GPL-3.0-or-later
// "Another program": a window of one colour with a text field. Prints a line for every key press, with the
// server's time in milliseconds, and for every click that reaches it, and where it is when it is painted.
// Usage: test-window TITLE RRGGBB X,Y,WIDTH,HEIGHT [full-screen] [take-focus] [grab-keyboard] [unmanaged]
// [stay-on-top]; unmanaged windows are override-redirect, and one that stays on top raises itself whenever
// the stack changes and prints a line for that.
#include "XcbReply.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct Description
{
    std::string title;
    std::uint32_t colour = 0;
    PixelRectangle place;
    bool isFullScreen = false;
    bool takesFocus = false;
    bool isUnmanaged = false;
    bool staysOnTop = false;
    bool grabsKeyboard = false;
};

constexpr PixelRectangle textField{20, 20, 180, 28};

class TestWindow
{
public:
    TestWindow(xcb_connection_t *connection, const Description &description)
        : m_connection(connection)
        , m_window(xcb_generate_id(connection))
        , m_paint(xcb_generate_id(connection))
        , m_takesFocus(description.takesFocus)
        , m_grabsKeyboard(description.grabsKeyboard)
    {
        create(description);
        setProperties(description);
        if (description.staysOnTop)
            watchStack();
        xcb_map_window(m_connection, m_window);
        xcb_flush(m_connection);
    }

    /// Handles events until the connection ends.
    void run()
    {
        while (const XcbReply<xcb_generic_event_t> event{xcb_wait_for_event(m_connection)}) {
            handle(*event);
            std::fflush(stdout);
            xcb_flush(m_connection);
        }
    }

private:
    void create(const Description &description)
    {
        const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
        const std::uint32_t values[] = {description.colour, description.isUnmanaged,
                                        XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_EXPOSURE |
                                            XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_FOCUS_CHANGE |
                                            XCB_EVENT_MASK_BUTTON_PRESS};
        xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, screen->root, description.place.x,
                          description.place.y, description.place.width, description.place.height, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        const xcb_font_t font = xcb_generate_id(m_connection);
        constexpr std::string_view fontName = "fixed";
        xcb_open_font(m_connection, font, static_cast<std::uint16_t>(fontName.size()), fontName.data());
        const std::uint32_t paintValues[] = {screen->black_pixel, screen->white_pixel, font};
        xcb_create_gc(m_connection, m_paint, m_window, XCB_GC_FOREGROUND | XCB_GC_BACKGROUND | XCB_GC_FONT,
                      paintValues);
        xcb_close_font(m_connection, font);
    }

    void setProperties(const Description &description)
    {
        constexpr std::string_view className("test-window\0test-window\0", 24);
        setText(XCB_ATOM_WM_NAME, description.title);
        setText(XCB_ATOM_WM_CLASS, className);
        constexpr std::uint32_t userPositionAndSize = 3;
        const std::uint32_t hints[18] = {userPositionAndSize, static_cast<std::uint32_t>(description.place.x),
                                         static_cast<std::uint32_t>(description.place.y),
                                         description.place.width, description.place.height};
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NORMAL_HINTS,
                            XCB_ATOM_WM_SIZE_HINTS, 32, 18, hints);
        if (description.isFullScreen) {
            const xcb_atom_t fullScreen = atomNamed(m_connection, "_NET_WM_STATE_FULLSCREEN");
            xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window,
                                atomNamed(m_connection, "_NET_WM_STATE"), XCB_ATOM_ATOM, 32, 1, &fullScreen);
        }
    }

    void watchStack()
    {
        const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection, rootWindow(m_connection), XCB_CW_EVENT_MASK, &mask);
    }

    void raise()
    {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(m_connection, m_window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        std::puts("raise");
    }

    void setText(xcb_atom_t property, std::string_view text)
    {
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, property, XCB_ATOM_STRING, 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
    }

    void handle(const xcb_generic_event_t &event)
    {
        switch (event.response_type & 0x7fU) {
        case XCB_CONFIGURE_NOTIFY:
            if (reinterpret_cast<const xcb_configure_notify_event_t &>(event).above_sibling == m_window)
                raise();
            break;
        case XCB_MAP_NOTIFY:
            if (reinterpret_cast<const xcb_map_notify_event_t &>(event).window != m_window)
                break;
            if (m_takesFocus)
                xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_POINTER_ROOT, m_window, XCB_CURRENT_TIME);
            if (m_grabsKeyboard)
                grabKeyboard();
            std::printf("window %u\n", m_window);
            break;
        case XCB_EXPOSE:
            printPlace();
            paintField();
            break;
        case XCB_BUTTON_PRESS:
            std::puts("click");
            break;
        case XCB_KEY_PRESS:
            keyPressed(reinterpret_cast<const xcb_key_press_event_t &>(event));
            break;
        default:
            break;
        }
    }

    void grabKeyboard()
    {
        const XcbReply<xcb_grab_keyboard_reply_t> reply(
            xcb_grab_keyboard_reply(m_connection,
                                    xcb_grab_keyboard(m_connection, 0, m_window, XCB_CURRENT_TIME,
                                                      XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                    nullptr));
        if (!reply || reply->status != XCB_GRAB_STATUS_SUCCESS)
            std::fputs("test-window: the keyboard cannot be grabbed\n", stderr);
    }

    void printPlace()
    {
        const XcbReply<xcb_translate_coordinates_reply_t> reply(xcb_translate_coordinates_reply(
            m_connection, xcb_translate_coordinates(m_connection, m_window, rootWindow(m_connection), 0, 0),
            nullptr));
        if (reply)
            std::printf("at %d %d\n", reply->dst_x, reply->dst_y);
    }

    void keyPressed(const xcb_key_press_event_t &event)
    {
        const XcbReply<xcb_get_keyboard_mapping_reply_t> mapping(xcb_get_keyboard_mapping_reply(
            m_connection, xcb_get_keyboard_mapping(m_connection, event.detail, 1), nullptr));
        if (!mapping || xcb_get_keyboard_mapping_keysyms_length(mapping.get()) == 0)
            return;
        const xcb_keysym_t symbol = *xcb_get_keyboard_mapping_keysyms(mapping.get());
        std::printf("key %x %u\n", symbol, event.time);
        if (symbol >= ' ' && symbol <= '~')
            m_text += static_cast<char>(symbol);
        paintField();
    }

    void paintField()
    {
        const std::uint32_t white = 0xffffff;
        const std::uint32_t black = 0;
        const xcb_rectangle_t field{textField.x, textField.y, textField.width, textField.height};
        xcb_change_gc(m_connection, m_paint, XCB_GC_FOREGROUND, &white);
        xcb_poly_fill_rectangle(m_connection, m_window, m_paint, 1, &field);
        xcb_change_gc(m_connection, m_paint, XCB_GC_FOREGROUND, &black);
        constexpr std::size_t maximumShown = 26;
        const auto length = static_cast<std::uint8_t>(std::min(m_text.size(), maximumShown));
        xcb_image_text_8(m_connection, length, m_window, m_paint, textField.x + 6, textField.y + 18,
                         m_text.data());
    }

    xcb_connection_t *m_connection;
    xcb_window_t m_window;
    xcb_gcontext_t m_paint;
    bool m_takesFocus;
    bool m_grabsKeyboard;
    std::string m_text;
};

Description parseArguments(const std::vector<std::string> &words)
{
    Description description;
    description.title = words.at(0);
    description.colour = static_cast<std::uint32_t>(std::stoul(words.at(1), nullptr, 16));
    description.place = parseRectangle(words.at(2));
    const auto has = [&](std::string_view option) {
        return std::find(words.begin(), words.end(), option) != words.end();
    };
    description.isFullScreen = has("full-screen");
    description.takesFocus = has("take-focus");
    description.isUnmanaged = has("unmanaged");
    description.staysOnTop = has("stay-on-top");
    description.grabsKeyboard = has("grab-keyboard");
    return description;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 4) {
        std::fputs(
            "usage: test-window TITLE RRGGBB X,Y,WIDTH,HEIGHT [full-screen] [take-focus] [grab-keyboard] "
            "[unmanaged] [stay-on-top]\n",
            stderr);
        return 2;
    }
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection) == 0)
        TestWindow(connection, parseArguments({argv + 1, argv + argc})).run();
    xcb_disconnect(connection);
    return 0;
}
