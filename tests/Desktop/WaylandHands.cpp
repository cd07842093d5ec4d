// SPDX-License-Identifier: GPL-3.0-or-later
// The hands of a person at a Wayland desktop: a pointer and a keyboard that last as long as this process.
// Reads commands from standard input and answers each with "done" when the compositor has it:
//   move X Y WIDTH HEIGHT   puts the pointer at a place of a layout of that size
//   button CODE STATE       presses (1) or releases (0) a button, by its evdev code
//   key CODE STATE          the same for a key
#include "fake-input-client-protocol.h"
#include "virtual-keyboard-unstable-v1-client-protocol.h"
#include "wlr-virtual-pointer-unstable-v1-client-protocol.h"

#include <sys/mman.h>
#include <time.h>
#include <unistd.h>
#include <wayland-client.h>

#include <cstdint>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view keymap = "xkb_keymap {\n"
                                    "xkb_keycodes { include \"evdev+aliases(qwerty)\" };\n"
                                    "xkb_types { include \"complete\" };\n"
                                    "xkb_compat { include \"complete\" };\n"
                                    "xkb_symbols { include \"pc+us+inet(evdev)\" };\n"
                                    "};\n";
constexpr std::uint32_t leftControl = 29;
constexpr std::uint32_t leftShift = 42;
constexpr std::uint32_t shiftModifier = 1;
constexpr std::uint32_t controlModifier = 4;

std::uint32_t milliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint32_t>(now.tv_sec * 1000 + now.tv_nsec / 1'000'000);
}

class Hands
{
public:
    explicit Hands(wl_display *display)
        : m_display(display)
        , m_registry(wl_display_get_registry(display))
    {
        static constexpr wl_registry_listener listener{&Hands::added,
                                                       [](void *, wl_registry *, std::uint32_t) {}};
        wl_registry_add_listener(m_registry, &listener, this);
        wl_display_roundtrip(m_display);
        if (m_fakeInput)
            org_kde_kwin_fake_input_authenticate(m_fakeInput, "wayland-hands", "tests");
        if (m_pointerManager && m_keyboardManager && m_seat) {
            m_pointer = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(m_pointerManager, m_seat);
            m_keyboard = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(m_keyboardManager, m_seat);
            sendKeymap();
        }
        wl_display_roundtrip(m_display);
    }

    [[nodiscard]] bool isUsable() const { return m_fakeInput || (m_pointer && m_keyboard); }

    /// Carries out one command; false when it is not understood or the compositor has gone.
    bool obey(const std::string &line)
    {
        std::istringstream words(line);
        std::string command;
        words >> command;
        if (command == "move") {
            double x = 0;
            double y = 0;
            std::uint32_t width = 0;
            std::uint32_t height = 0;
            if (!(words >> x >> y >> width >> height))
                return false;
            move(x, y, width, height);
        } else {
            std::uint32_t code = 0;
            std::uint32_t state = 0;
            if (!(words >> code >> state))
                return false;
            if (command == "button")
                button(code, state);
            else if (command == "key")
                key(code, state);
            else
                return false;
        }
        return wl_display_roundtrip(m_display) >= 0;
    }

private:
    static void added(void *data, wl_registry *registry, std::uint32_t name, const char *interface,
                      std::uint32_t version)
    {
        auto &self = *static_cast<Hands *>(data);
        const std::string_view offered(interface);
        const auto bind = [&](const wl_interface &wanted, std::uint32_t highest) {
            return wl_registry_bind(registry, name, &wanted, version < highest ? version : highest);
        };
        if (offered == wl_seat_interface.name && !self.m_seat)
            self.m_seat = static_cast<wl_seat *>(bind(wl_seat_interface, 1));
        else if (offered == zwlr_virtual_pointer_manager_v1_interface.name)
            self.m_pointerManager = static_cast<zwlr_virtual_pointer_manager_v1 *>(
                bind(zwlr_virtual_pointer_manager_v1_interface, 1));
        else if (offered == zwp_virtual_keyboard_manager_v1_interface.name)
            self.m_keyboardManager = static_cast<zwp_virtual_keyboard_manager_v1 *>(
                bind(zwp_virtual_keyboard_manager_v1_interface, 1));
        else if (offered == org_kde_kwin_fake_input_interface.name)
            self.m_fakeInput =
                static_cast<org_kde_kwin_fake_input *>(bind(org_kde_kwin_fake_input_interface, 4));
    }

    void sendKeymap()
    {
        const int file = memfd_create("keymap", MFD_CLOEXEC);
        // The terminating zero belongs to a keymap.
        const std::string text = std::string(keymap) + '\0';
        if (file < 0 || write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
            return;
        zwp_virtual_keyboard_v1_keymap(m_keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file,
                                       static_cast<std::uint32_t>(text.size()));
        wl_display_flush(m_display);
        close(file);
    }

    void move(double x, double y, std::uint32_t width, std::uint32_t height)
    {
        if (m_fakeInput) {
            org_kde_kwin_fake_input_pointer_motion_absolute(m_fakeInput, wl_fixed_from_double(x),
                                                            wl_fixed_from_double(y));
            return;
        }
        // The places are whole numbers there, so the layout is divided more finely.
        constexpr std::uint32_t parts = 16;
        zwlr_virtual_pointer_v1_motion_absolute(
            m_pointer, milliseconds(), static_cast<std::uint32_t>(x * parts),
            static_cast<std::uint32_t>(y * parts), width * parts, height * parts);
        zwlr_virtual_pointer_v1_frame(m_pointer);
    }

    void button(std::uint32_t code, std::uint32_t state)
    {
        if (m_fakeInput) {
            org_kde_kwin_fake_input_button(m_fakeInput, code, state);
            return;
        }
        zwlr_virtual_pointer_v1_button(m_pointer, milliseconds(), code, state);
        zwlr_virtual_pointer_v1_frame(m_pointer);
    }

    void key(std::uint32_t code, std::uint32_t state)
    {
        if (m_fakeInput) {
            org_kde_kwin_fake_input_keyboard_key(m_fakeInput, code, state);
            return;
        }
        zwp_virtual_keyboard_v1_key(m_keyboard, milliseconds(), code, state);
        const std::uint32_t modifier = code == leftControl ? controlModifier
                                       : code == leftShift ? shiftModifier
                                                           : 0;
        if (modifier == 0)
            return;
        m_modifiers = state != 0 ? m_modifiers | modifier : m_modifiers & ~modifier;
        zwp_virtual_keyboard_v1_modifiers(m_keyboard, m_modifiers, 0, 0, 0);
    }

    wl_display *m_display;
    wl_registry *m_registry;
    wl_seat *m_seat = nullptr;
    zwlr_virtual_pointer_manager_v1 *m_pointerManager = nullptr;
    zwp_virtual_keyboard_manager_v1 *m_keyboardManager = nullptr;
    org_kde_kwin_fake_input *m_fakeInput = nullptr;
    zwlr_virtual_pointer_v1 *m_pointer = nullptr;
    zwp_virtual_keyboard_v1 *m_keyboard = nullptr;
    std::uint32_t m_modifiers = 0;
};

} // namespace

int main()
{
    wl_display *display = wl_display_connect(nullptr);
    if (!display) {
        std::puts("no compositor");
        return 1;
    }
    Hands hands(display);
    std::puts(hands.isUsable() ? "ready" : "the compositor offers no virtual pointer and keyboard");
    std::fflush(stdout);
    for (std::string line; hands.isUsable() && std::getline(std::cin, line);) {
        if (!hands.obey(line))
            return 1;
        std::puts("done");
        std::fflush(stdout);
    }
    return hands.isUsable() ? 0 : 1;
}
