// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCheckBox>
#include <QSignalBlocker>

/// Shows what is stored elsewhere. Nobody is told: the check boxes act on every change that the mouse, the
/// keyboard or a screen reader makes.
inline void setCheckedQuietly(QCheckBox &box, bool isChecked)
{
    const QSignalBlocker blocker(box);
    box.setChecked(isChecked);
}
