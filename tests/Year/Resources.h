// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMap>
#include <QString>

/// Counts what the process holds.
namespace Resources {

using Counts = QMap<QString, int>;

/// Open descriptors, threads, widgets, and all objects below the application and its windows.
[[nodiscard]] Counts ofTheProcess();

/// The counts that differ; empty if none does.
[[nodiscard]] QString difference(const Counts &before, const Counts &after);

} // namespace Resources
