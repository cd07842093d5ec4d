// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "WaylandQueue.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct wl_interface;

/// The globals that a compositor offered when it was asked.
class WaylandGlobals
{
public:
    /// How long a compositor may take to answer before the program continues without it.
    static constexpr std::chrono::milliseconds defaultTimeout{1000};

    /// Asks on `queue`, which outlives the result, and waits for at most `timeout`. Absent when the
    /// compositor does not answer in time or the connection is broken.
    [[nodiscard]] static std::optional<WaylandGlobals>
    ask(const WaylandQueue &queue, std::chrono::milliseconds timeout = defaultTimeout);

    [[nodiscard]] bool offers(std::string_view interface) const { return find(interface) != nullptr; }

    /// The first object of the interface at `version`, to be destroyed by the caller, or nullptr where none
    /// is offered at that version.
    [[nodiscard]] void *bind(const wl_interface &interface, std::uint32_t version) const;

private:
    struct Global
    {
        std::uint32_t name;
        std::string interface;
        std::uint32_t version;
    };

    explicit WaylandGlobals(const WaylandQueue &queue);
    [[nodiscard]] const Global *find(std::string_view interface) const;

    std::unique_ptr<std::vector<Global>> m_globals; ///< The registry's pointer to it survives a move.
    NativePointer<wl_registry> m_registry;
};
