// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Has screen readers told what a panel and a ring are: a dialog, and a progress bar whose value is the
/// seconds left. Does nothing from the second call on. User-interface thread only.
void describeBreakToScreenReaders();
