// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

#include <memory>

/// A module is a plug-in that holds one part of the program, so that libraries which only this part needs are
/// loaded when it is first used and not at every start. Its interface derives from ModuleInterface, and names
/// its file in lib/orvanebreak/modules as `fileName`.
namespace Module {

/// The folder of the modules: lib/orvanebreak/modules beside the bin folder of the running program. Needs the
/// application object.
[[nodiscard]] QString folder();

/// Loads the module in the file `path` and returns it; it stays loaded until the process ends. Logs a warning
/// and returns null when the file is missing, damaged, not a module, or from another version of the program,
/// because the package may have been replaced since the start. The next call tries again. Any thread.
[[nodiscard]] QObject *load(const QString &path);

/// As above, for the module with the interface `Interface`.
template <typename Interface>
[[nodiscard]] Interface *load()
{
    return qobject_cast<Interface *>(load(folder() + QLatin1Char('/') + QLatin1String(Interface::fileName)));
}

/// Loads a module and returns what its `function`, for example &NetworkModule::makeHttp, makes. Null when the
/// module cannot be loaded. Any thread.
template <typename Interface, typename Object, typename... Parameters, typename... Arguments>
[[nodiscard]] std::unique_ptr<Object>
make(std::unique_ptr<Object> (Interface::*function)(Parameters...) const, const Arguments &...arguments)
{
    const Interface *module = load<Interface>();
    return module ? (module->*function)(arguments...) : nullptr;
}

} // namespace Module
