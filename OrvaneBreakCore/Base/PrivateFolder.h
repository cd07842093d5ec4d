// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <filesystem>

/// Creates `folder` and its missing parents with the mode 0700. Failures are silent. Any thread.
void createPrivateFolder(const std::filesystem::path &folder);

/// Opens `folder`; no descriptor on failure. Any thread.
[[nodiscard]] FileDescriptor openFolder(const std::filesystem::path &folder);
