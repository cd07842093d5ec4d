// SPDX-License-Identifier: GPL-3.0-or-later
#include "WaylandGlobals.h"

#include "NativePointers.h"
#include "Support/RunningCompositor.h"
#include "Support/TestProgram.h"

#include <QTest>

#include <wayland-client.h>

#include <optional>

/// The globals of a compositor of the test.
class WaylandGlobalsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void offeredGlobalsAreListed()
    {
        const RunningCompositor running([](FakeCompositor &compositor) {
            compositor.offerSeat();
            compositor.offerKdeIdle();
        });
        const WaylandDisplayPointer display(wl_display_connect(nullptr));
        const WaylandQueue queue(*display);
        const std::optional<WaylandGlobals> globals = WaylandGlobals::ask(queue);
        QVERIFY(globals);
        QVERIFY(globals->offers("wl_seat"));
        QVERIFY(globals->offers("org_kde_kwin_idle"));
        QVERIFY(!globals->offers("ext_idle_notifier_v1"));
    }

    void globalWithdrawnDuringTheListIsNotOffered()
    {
        const RunningCompositor running([](FakeCompositor &compositor) {
            wl_global *seat = compositor.offerSeat();
            compositor.withdrawWhenTold(seat, compositor.offerKdeIdle());
        });
        const WaylandDisplayPointer display(wl_display_connect(nullptr));
        const WaylandQueue queue(*display);
        const std::optional<WaylandGlobals> globals = WaylandGlobals::ask(queue);
        QVERIFY(globals);
        QVERIFY(!globals->offers("wl_seat"));
        QVERIFY(globals->offers("org_kde_kwin_idle"));
    }
};

ORVANE_TEST(WaylandGlobalsTest, QCoreApplication)
#include "WaylandGlobalsTest.moc"
