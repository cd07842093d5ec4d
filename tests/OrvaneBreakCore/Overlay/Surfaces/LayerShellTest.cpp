// SPDX-License-Identifier: GPL-3.0-or-later
#include "LayerShell.h"

#include "LayerProbe.h"
#include "NativePointers.h"
#include "Support/FakeLayerShell.h"
#include "Support/RunningCompositor.h"
#include "Support/TestProgram.h"
#include "WaylandGlobals.h"

#include <QElapsedTimer>
#include <QTest>

#include <wayland-client.h>

#include <memory>
#include <optional>

using namespace std::chrono_literals;

namespace {

constexpr std::uint32_t overlay = 3;
constexpr std::uint32_t allEdges = 15;

/// A client with a surface and an output, and a compositor that answers by itself until it is stopped.
struct Fixture
{
    explicit Fixture(FakeLayerShell::Answer answer = FakeLayerShell::Answer::Configure,
                     bool isShellOffered = true, bool isLockOffered = true)
        : running([&](FakeCompositor &offering) {
            server.emplace(offering, answer);
            server->offer(isShellOffered, isLockOffered);
        })
        , display(wl_display_connect(nullptr))
    {
        const WaylandQueue queue(*display);
        const std::optional<WaylandGlobals> globals = WaylandGlobals::ask(queue);
        compositor.reset(static_cast<wl_compositor *>(globals->bind(wl_compositor_interface, 1)));
        output.reset(static_cast<wl_output *>(globals->bind(wl_output_interface, 1)));
        // The toolkit's objects are on the default queue as well.
        for (void *each : {static_cast<void *>(compositor.get()), static_cast<void *>(output.get())})
            wl_proxy_set_queue(static_cast<wl_proxy *>(each), nullptr);
        surface.reset(wl_compositor_create_surface(compositor.get()));
        shell = LayerShell::find(*display);
    }

    std::unique_ptr<LayerSurface> cover(std::chrono::milliseconds timeout = 10s) const
    {
        return shell->cover(*surface, *output, std::chrono::steady_clock::now() + timeout);
    }

    /// Has the compositor send events with `action`, and handles them as the toolkit does.
    void exchangeAfter(const std::function<void()> &action)
    {
        action();
        running.compositor().pump();
        if (wl_display_prepare_read(display.get()) == 0)
            wl_display_read_events(display.get());
        wl_display_dispatch_pending(display.get());
        wl_display_flush(display.get());
        running.compositor().pump();
    }

    [[nodiscard]] const FakeLayerShell::Layer &layer() const { return server->layers().front(); }

    std::optional<FakeLayerShell> server;
    RunningCompositor running;
    WaylandDisplayPointer display;
    std::unique_ptr<wl_compositor, decltype(&wl_compositor_destroy)> compositor{nullptr,
                                                                                wl_compositor_destroy};
    std::unique_ptr<wl_output, decltype(&wl_output_destroy)> output{nullptr, wl_output_destroy};
    std::unique_ptr<wl_surface, decltype(&wl_surface_destroy)> surface{nullptr, wl_surface_destroy};
    std::unique_ptr<LayerShell> shell;
};

} // namespace

/// Layer surfaces on a compositor of the test.
class LayerShellTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void compositorWithoutALayerShell()
    {
        const Fixture f(FakeLayerShell::Answer::Configure, false);
        QVERIFY(!f.shell);
    }

    void surfaceCoversItsOutputAndRequestsTheKeyboard()
    {
        Fixture f;
        QVERIFY(f.shell);
        const std::unique_ptr<LayerSurface> covering = f.cover();
        QVERIFY(covering);
        QCOMPARE(covering->size(), QSize(FakeLayerShell::width, FakeLayerShell::height));
        wl_display_roundtrip(f.display.get());
        f.running.stop();
        QCOMPARE(f.server->layers().size(), std::size_t(1));
        QCOMPARE(f.layer().layer, overlay);
        QCOMPARE(f.layer().anchor, allEdges);
        QCOMPARE(f.layer().exclusiveZone, -1);
        QCOMPARE(f.layer().keyboards, (std::vector<std::uint32_t>{1}));
        QCOMPARE(f.layer().acknowledged, (std::vector<std::uint32_t>{FakeLayerShell::firstSerial}));
    }

    void compositorThatDoesNotConfigureTheSurface()
    {
        Fixture f(FakeLayerShell::Answer::Nothing);
        QVERIFY(!f.cover(20ms));
        wl_display_roundtrip(f.display.get());
        f.running.stop();
        QVERIFY(!f.layer().resource);
    }

    void outputThatIsGoneAlready()
    {
        Fixture f(FakeLayerShell::Answer::Close);
        QVERIFY(!f.cover());
        wl_display_roundtrip(f.display.get());
        f.running.stop();
        QVERIFY(!f.layer().resource);
    }

    void compositorThatDies()
    {
        Fixture f(FakeLayerShell::Answer::Nothing);
        f.running.stop();
        f.running.compositor().die();
        QVERIFY(!f.cover());
    }

    void newSizeIsAcknowledgedAndReported()
    {
        Fixture f;
        const std::unique_ptr<LayerSurface> covering = f.cover();
        QVERIFY(covering);
        QList<QSize> sizes;
        covering->setHandlers({[&](QSize size) { sizes.append(size); }, nullptr});
        f.running.stop();
        f.exchangeAfter([&] { f.server->configure(8, 1920, 1080); });
        f.exchangeAfter([&] { f.server->configure(9, 1920, 1080); });
        QCOMPARE(sizes, QList<QSize>{QSize(1920, 1080)});
        QCOMPARE(f.layer().acknowledged.back(), 9U);
    }

    void closedHandlerMayDestroyTheSurface()
    {
        Fixture f;
        std::unique_ptr<LayerSurface> covering = f.cover();
        QVERIFY(covering);
        int ends = 0;
        covering->setHandlers({nullptr, [&] {
                                   ++ends;
                                   covering.reset();
                               }});
        f.running.stop();
        f.exchangeAfter([&] {
            f.server->close();
            f.server->close();
        });
        QCOMPARE(ends, 1);
        QVERIFY(!f.layer().resource);
    }

    void keyboardThatIsNotWantedForAMoment()
    {
        Fixture f;
        const std::unique_ptr<LayerSurface> covering = f.cover();
        QVERIFY(covering);
        f.running.stop();
        const int commits = f.layer().commits;
        f.exchangeAfter([&] {
            covering->setKeyboardWanted(false);
            covering->setKeyboardWanted(true);
            wl_display_flush(f.display.get());
        });
        QCOMPARE(f.layer().commits, commits + 2);
        QCOMPARE(f.layer().keyboards, (std::vector<std::uint32_t>{1, 0, 1}));
    }

    void probeTellsWhetherTheCompositorDraws()
    {
        Fixture f;
        LayerProbe probe(*f.display, *f.shell);
        QVERIFY(probe.isDrawn(*f.output));
        f.server->setDrawing(false);
        QVERIFY(!probe.isDrawn(*f.output));
        f.running.stop();
        QCOMPARE(f.server->layers().size(), std::size_t(2));
        QVERIFY(!f.layer().resource);
        QVERIFY(f.layer().keyboards.empty());
        QElapsedTimer elapsed;
        elapsed.start();
        QVERIFY(!probe.isDrawn(*f.output));
        QVERIFY(elapsed.elapsed() < 500);
        f.exchangeAfter([&] { f.server->setDrawing(true); });
        QVERIFY(probe.isDrawn(*f.output));
        f.exchangeAfter([] {});
        QVERIFY(!f.server->layers().back().resource);
    }

    void probeIsNotNeededWhereNoSessionCanBeLocked()
    {
        Fixture f(FakeLayerShell::Answer::Configure, true, false);
        f.server->setDrawing(false);
        LayerProbe probe(*f.display, *f.shell);
        QVERIFY(probe.isDrawn(*f.output));
        f.running.stop();
        QVERIFY(f.server->layers().empty());
    }

    void probeLearnsNothingWithoutAnOutput()
    {
        const Fixture f(FakeLayerShell::Answer::Close);
        LayerProbe probe(*f.display, *f.shell);
        QVERIFY(probe.isDrawn(*f.output));
    }

    void destructionDestroysTheLayerSurface()
    {
        Fixture f;
        std::unique_ptr<LayerSurface> covering = f.cover();
        QVERIFY(covering);
        covering.reset();
        wl_display_roundtrip(f.display.get());
        f.running.stop();
        QVERIFY(!f.layer().resource);
    }
};

ORVANE_TEST(LayerShellTest, QCoreApplication)
#include "LayerShellTest.moc"
