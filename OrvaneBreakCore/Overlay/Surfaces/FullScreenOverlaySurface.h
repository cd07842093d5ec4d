// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "OverlaySurface.h"

/// Ordinary full-screen windows, for platforms that offer nothing better: the window manager may keep panels
/// above them and list them in the task bar. They are opaque black, because desktops differ in what they show
/// behind a full-screen window.
class FullScreenOverlaySurface final : public OverlaySurface
{
public:
    void begin() override {}
    void present(QWidget &panel, QScreen &screen, bool takesKeyboard) override;
    void end(const EndingPress & /*press*/) override {}
};
