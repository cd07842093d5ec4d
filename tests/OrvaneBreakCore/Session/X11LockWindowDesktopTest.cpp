// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/TestProgram.h"
#include "VirtualXServer.h"
#include "X11LockWindow.h"

#include <QTest>

#include <cstdint>
#include <memory>

namespace {

struct Rectangle
{
    std::int16_t x = 0;
    std::int16_t y = 0;
    std::uint16_t width = 640;
    std::uint16_t height = 480;
};

/// Another program on the display.
class OtherClient
{
public:
    OtherClient()
        : m_screen(xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data)
    {
    }

    [[nodiscard]] xcb_connection_t *connection() const { return m_connection.get(); }

    void grabKeyboard() const
    {
        xcb_grab_keyboard(connection(), 0, m_screen->root, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
                          XCB_GRAB_MODE_ASYNC);
        finish();
    }

    void grabPointer() const
    {
        xcb_grab_pointer(connection(), 0, m_screen->root, 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                         XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME);
        finish();
    }

    void releaseKeyboard() const
    {
        xcb_ungrab_keyboard(connection(), XCB_CURRENT_TIME);
        finish();
    }

    /// A mapped window.
    xcb_window_t show(Rectangle place, bool isOverrideRedirect = true) const
    {
        const xcb_window_t window = xcb_generate_id(connection());
        const std::uint32_t value = isOverrideRedirect ? 1 : 0;
        xcb_create_window(connection(), XCB_COPY_FROM_PARENT, window, m_screen->root, place.x, place.y,
                          place.width, place.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_OVERRIDE_REDIRECT, &value);
        xcb_map_window(connection(), window);
        finish();
        return window;
    }

    void hide(xcb_window_t window) const
    {
        xcb_unmap_window(connection(), window);
        finish();
    }

private:
    /// Returns once the server has carried everything out.
    void finish() const
    {
        std::free(xcb_get_input_focus_reply(connection(), xcb_get_input_focus(connection()), nullptr));
    }

    XcbConnectionPointer m_connection{xcb_connect(nullptr, nullptr)};
    xcb_screen_t *m_screen;
};

/// A display with the program's toolkit and another program.
struct Display
{
    VirtualXServer server;
    OtherClient toolkit;
    OtherClient locker;
    X11LockWindow lockWindow{toolkit.connection()};
};

} // namespace

/// Lock screens on a real X server, played by a client of the test's. The real ones are in the desktop tests.
class X11LockWindowDesktopTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void aWindowOverTheRootWithBothGrabs()
    {
        const Display display;
        QVERIFY(!display.lockWindow.isUp());
        const xcb_window_t window = display.locker.show({});
        QVERIFY(!display.lockWindow.isUp());
        display.locker.grabPointer();
        QVERIFY(!display.lockWindow.isUp());
        display.locker.grabKeyboard();
        QVERIFY(display.lockWindow.isUp());
        display.locker.hide(window);
        QVERIFY(!display.lockWindow.isUp());
    }

    static void oneWindowForEachMonitor()
    {
        const Display display;
        display.locker.grabKeyboard();
        display.locker.grabPointer();
        display.locker.show({0, 0, 320, 240});
        QVERIFY(!display.lockWindow.isUp());
        display.locker.show({320, 240, 320, 240});
        QVERIFY(display.lockWindow.isUp());
    }

    static void aWindowOfAnotherClientThanTheGrabs()
    {
        const Display display;
        const OtherClient saver;
        saver.show({1, 1, 638, 478});
        display.locker.grabKeyboard();
        display.locker.grabPointer();
        QVERIFY(display.lockWindow.isUp());
        display.locker.releaseKeyboard();
        QVERIFY(!display.lockWindow.isUp());
    }

    static void anOpenMenu()
    {
        const Display display;
        display.locker.grabKeyboard();
        display.locker.grabPointer();
        display.locker.show({200, 100, 150, 300});
        // A window outside of the screen covers nothing.
        display.locker.show({640, 0, 640, 480});
        display.locker.show({-1000, -1000, 640, 480});
        QVERIFY(!display.lockWindow.isUp());
    }

    static void aFullScreenWindowOfAWindowManager()
    {
        const Display display;
        display.locker.grabKeyboard();
        display.locker.grabPointer();
        display.locker.show({}, false);
        QVERIFY(!display.lockWindow.isUp());
    }

    static void theProgramsOwnWindows()
    {
        const Display display;
        display.toolkit.show({});
        display.locker.grabKeyboard();
        display.locker.grabPointer();
        QVERIFY(!display.lockWindow.isUp());
    }

    static void askingTakesNoGrab()
    {
        const Display display;
        QVERIFY(!display.lockWindow.isUp());
        const OtherClient later;
        later.show({});
        later.grabKeyboard();
        later.grabPointer();
        QVERIFY(display.lockWindow.isUp());
    }

    static void aServerThatEnds()
    {
        auto server = std::make_unique<VirtualXServer>();
        const OtherClient toolkit;
        const X11LockWindow lockWindow(toolkit.connection());
        server.reset();
        QVERIFY(!lockWindow.isUp());
    }

    static void withoutAnXServer() { QVERIFY(!X11LockWindow(nullptr).isUp()); }
};

ORVANE_TEST(X11LockWindowDesktopTest, QCoreApplication)
#include "X11LockWindowDesktopTest.moc"
