// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The version of the operating system, which is that of the kernel.
struct SystemVersion
{
    int major = 0;
    int minor = 0;
    int patch = 0;

    /// The version of the running kernel.
    [[nodiscard]] static SystemVersion current();

    /// The numbers at the beginning of a kernel release, for example "6.1.0-18-amd64"; missing parts are 0.
    [[nodiscard]] static SystemVersion parse(const char *release);

    /// "macOS ", which the makers' server expects from every client, and the major and minor version.
    [[nodiscard]] QString clientText() const;
};
