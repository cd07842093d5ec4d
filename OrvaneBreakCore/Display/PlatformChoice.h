// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

/// What a compositor says of itself.
enum class CompositorAnswer
{
    Absent, ///< None is there, or none was asked.
    Silent, ///< It takes connections and does not answer in time.
    Plain,
    LayerShell, ///< It lets programs put surfaces above all windows.
};

/// What the choice depends on.
struct DisplayFacts
{
    QString requestedPlatform; ///< The user's QT_QPA_PLATFORM.
    CompositorAnswer compositor = CompositorAnswer::Absent;
    bool isX11Reachable = false;
};

/// The toolkit's platform plugin that can put a break over everything.
struct PlatformChoice
{
    QByteArray platform; ///< Empty: the toolkit's own business, by the user's wish or for lack of a display.
    const char *reason = ""; ///< In English, for diagnostics.
};

/// The best platform: native layer surfaces, else X11, also through an X server inside a Wayland session,
/// else plain Wayland. The user's wish goes first.
[[nodiscard]] PlatformChoice choosePlatform(const DisplayFacts &facts);

/// Whether a compositor is worth asking: always when the session names one in `waylandDisplay`; the library's
/// usual name, which may belong to another session of the same user, only where `x11Display` names no X
/// server either.
[[nodiscard]] bool isCompositorWorthAsking(const QString &waylandDisplay, const QString &x11Display);

/// Asks the compositor that WAYLAND_DISPLAY names, or the usual one. Waits for at most `limit`.
[[nodiscard]] CompositorAnswer askCompositor(std::chrono::milliseconds limit);

/// Looks at the environment, the compositor and, where it matters, the X server; what the user's wish leaves
/// out is not looked at. Waits for the compositor for at most a second. Needs no application object.
[[nodiscard]] DisplayFacts findDisplayFacts();

/// Puts a choice into this process's environment while the application object is made, and takes it out again
/// when destroyed, so that the programs started from here make their own. Lets the toolkit make windows
/// without a role on Wayland, which the layer surfaces need; that stays.
class PlatformEnvironment
{
public:
    explicit PlatformEnvironment(const PlatformChoice &choice);
    ~PlatformEnvironment();
    PlatformEnvironment(const PlatformEnvironment &) = delete;
    PlatformEnvironment &operator=(const PlatformEnvironment &) = delete;

private:
    bool m_isSet;
};
