// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMap>
#include <QString>

/// What the process holds.
namespace Resources {

using Counts = QMap<QString, int>;

/// Open descriptors, threads, windows with their parts, and what hangs on the application.
[[nodiscard]] Counts ofTheProcess();

/// The counts that are not the same, empty when all are.
[[nodiscard]] QString difference(const Counts &before, const Counts &after);

} // namespace Resources
