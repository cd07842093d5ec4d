// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtPlugin>

/// The base of module interfaces. Each of them names the module's file as `fileName` and is declared with
/// Q_DECLARE_INTERFACE.
class ModuleInterface
{
public:
    ModuleInterface() = default;
    virtual ~ModuleInterface() = default;
    ModuleInterface(const ModuleInterface &) = delete;
    ModuleInterface &operator=(const ModuleInterface &) = delete;
};
