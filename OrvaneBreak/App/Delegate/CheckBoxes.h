// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCheckBox>
#include <QSignalBlocker>

/// Shows a state that is stored elsewhere. Emits no signals, because the handlers of the check boxes act on
/// every change.
inline void setCheckedQuietly(QCheckBox &box, bool isChecked)
{
    const QSignalBlocker blocker(box);
    box.setChecked(isChecked);
}
