// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtPlugin>

/// What a module offers derives from this, names its file as `fileName`, and is declared an interface of
/// plug-ins.
class ModuleInterface
{
public:
    ModuleInterface() = default;
    virtual ~ModuleInterface() = default;
    ModuleInterface(const ModuleInterface &) = delete;
    ModuleInterface &operator=(const ModuleInterface &) = delete;
};
