// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

/// A module is a part of the program in a plug-in of its own, so that the libraries which nothing else needs
/// are loaded when the part is first needed, not at every start. What it offers is an interface, which names
/// the module's file in lib/orvanebreak/modules as `fileName`.
namespace Module {

/// The folder of the modules, lib/orvanebreak/modules beside the bin folder of the running program. Needs the
/// application object.
[[nodiscard]] QString folder();

/// Loads the module in the file `path` and returns it; it stays until the process ends. Null, and a line in
/// the log, when the file is missing, damaged, no module or one of another version of the program: the
/// package may have been replaced since the start. The next call tries again. Any thread.
[[nodiscard]] QObject *load(const QString &path);

/// Loads the module that offers `Interface`, as above.
template <typename Interface>
[[nodiscard]] Interface *load()
{
    return qobject_cast<Interface *>(load(folder() + QLatin1Char('/') + QLatin1String(Interface::fileName)));
}

} // namespace Module
