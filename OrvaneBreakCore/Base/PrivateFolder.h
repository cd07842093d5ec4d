// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <filesystem>

/// Creates `folder` and its missing parents for the user alone. Failures are silent. Any thread.
void createPrivateFolder(const std::filesystem::path &folder);

/// Opens `folder`; none, with errno set, when that failed. Any thread.
[[nodiscard]] FileDescriptor openFolder(const std::filesystem::path &folder);
