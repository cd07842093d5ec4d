// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

/// The folders for a user's files. Nothing is created. Any thread.
struct UserFolders
{
    /// Sets HOME to the folder in the user database where the environment has none. Before threads are
    /// started.
    static void provideHome();

    /// $XDG_CONFIG_HOME, or ~/.config when that is not an absolute path.
    [[nodiscard]] static std::filesystem::path configuration();

    /// $XDG_CACHE_HOME, or ~/.cache when that is not an absolute path.
    [[nodiscard]] static std::filesystem::path cache();

    /// $XDG_DATA_HOME, or ~/.local/share when that is not an absolute path.
    [[nodiscard]] static std::filesystem::path data();

    /// $XDG_STATE_HOME, or ~/.local/state when that is not an absolute path.
    [[nodiscard]] static std::filesystem::path state();
};
