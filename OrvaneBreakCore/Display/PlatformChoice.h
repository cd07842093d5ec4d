// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>

/// How a compositor answers the question for its globals.
enum class CompositorAnswer
{
    Absent,     ///< There is no compositor, or none was asked.
    Unasked,    ///< WAYLAND_SOCKET is a connection that only the toolkit can use.
    Silent,     ///< It accepts connections but does not answer in time.
    Plain,      ///< It offers no layer shell.
    LayerShell, ///< It lets programs put surfaces above all windows.
};

/// What the choice of a platform depends on.
struct DisplayFacts
{
    /// The entry of the user's QT_QPA_PLATFORM that the toolkit uses: the first one whose display is there,
    /// or the whole list if there is none.
    QString requestedPlatform;
    CompositorAnswer compositor = CompositorAnswer::Absent;
    bool isX11Reachable = false;
};

/// The platform plugin of the toolkit that can put a break over everything.
struct PlatformChoice
{
    QByteArray platform;     ///< Empty where the user has chosen, or where there is no display.
    const char *reason = ""; ///< In English, for diagnostics.
};

/// The best platform: native layer surfaces, else X11, including an X server inside a Wayland session, else
/// plain Wayland. A platform that the user has requested takes precedence.
[[nodiscard]] PlatformChoice choosePlatform(const DisplayFacts &facts);

/// Whether to ask a compositor: always if the session names one in `waylandDisplay`; the library's default
/// name, which may belong to another session of the same user, only if `x11Display` names no X server.
[[nodiscard]] bool isCompositorWorthAsking(const QString &waylandDisplay, const QString &x11Display);

/// Asks the compositor that WAYLAND_DISPLAY names, or the one with the default name. Waits for at most
/// `timeout`.
[[nodiscard]] CompositorAnswer askCompositor(std::chrono::milliseconds timeout);

/// Examines the environment, the compositor and, where it matters, the X server; with requested platforms
/// only what those need. Waits for the compositor for at most `timeout`. Needs no application object.
[[nodiscard]] DisplayFacts findDisplayFacts(std::chrono::milliseconds timeout);

/// An error message of one line in English if there is no display that the program can start on, where the
/// toolkit would abort the process. A requested platform that needs no display always passes.
[[nodiscard]] std::optional<QString> missingDisplay(const DisplayFacts &facts);

/// Sets the chosen platform in this process's environment while the application object is created, and unsets
/// it when destroyed, so that programs started from here make their own choice. Also makes Qt send pictures
/// to the X server instead of sharing memory with it: the pictures of a break are small, and Qt would wait
/// before each until the server has read the last one. Permanently lets the toolkit create Wayland surfaces
/// without a role, which the layer surfaces need.
class PlatformEnvironment
{
public:
    explicit PlatformEnvironment(const PlatformChoice &choice);
    ~PlatformEnvironment();
    PlatformEnvironment(const PlatformEnvironment &) = delete;
    PlatformEnvironment &operator=(const PlatformEnvironment &) = delete;

private:
    bool m_isSet;
    bool m_isSharedMemoryFree; ///< The user has not decided about it.
};
