// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

class FakeCompositor;
struct wl_resource;

/// Adds surfaces, one output and a layer shell to a compositor, and records the requested layers.
class FakeLayerShell
{
public:
    enum class Answer
    {
        Configure, ///< Answers the first commit of a surface with its size.
        Close,     ///< Closes the layer, as when the output has just gone.
        Nothing
    };

    struct Layer
    {
        wl_resource *resource = nullptr; ///< Nullptr once the client has destroyed it.
        wl_resource *surface = nullptr;
        std::uint32_t layer = 0;
        std::uint32_t anchor = 0;
        std::int32_t exclusiveZone = 0;
        std::vector<std::uint32_t> keyboards; ///< The interactivities that were requested, in their order.
        int commits = 0;
        std::vector<std::uint32_t> acknowledged; ///< Serials of configure events.
    };

    static constexpr std::uint32_t firstSerial = 7;
    static constexpr std::uint32_t width = 1280;
    static constexpr std::uint32_t height = 720;

    explicit FakeLayerShell(FakeCompositor &compositor, Answer answer = Answer::Configure);
    FakeLayerShell(const FakeLayerShell &) = delete;
    FakeLayerShell &operator=(const FakeLayerShell &) = delete;

    /// Announces the globals that a layer needs, without `isShellOffered` all but the shell, and that of
    /// ext-session-lock-v1 if `isLockOffered`.
    void offer(bool isShellOffered = true, bool isLockOffered = true);

    /// Each sends its event to every remaining layer.
    void configure(std::uint32_t serial, std::uint32_t newWidth, std::uint32_t newHeight) const;
    void close() const;

    /// Whether frames are drawn, as they are at first. Drawing again answers what waited for it, and so runs
    /// on the compositor's thread or while that is stopped.
    void setDrawing(bool isDrawing);

    [[nodiscard]] const std::vector<Layer> &layers() const { return m_layers; }

private:
    struct Requests;
    friend struct Requests;

    FakeCompositor &m_compositor;
    Answer m_answer;
    std::vector<Layer> m_layers;
    std::vector<wl_resource *> m_frames; ///< Callbacks that wait for the next frame.
    std::atomic<bool> m_isDrawing = true;
};
