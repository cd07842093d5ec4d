// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "OverlaySurface.h"

/// Ordinary full-screen windows, for platforms that offer nothing better: the window manager may keep its
/// panels above them and list them in the task bar. Opaque black, because nobody can tell what the desktop
/// puts behind a full-screen window.
class FullScreenOverlaySurface final : public OverlaySurface
{
public:
    void begin() override {}
    void present(QWidget &panel, QScreen &screen, bool takesKeyboard) override;
    void end(const EndingPress & /*press*/) override {}
};
