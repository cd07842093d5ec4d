// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

/// Registers an instance as the shared one of its type for the life of this object. Registering a second one
/// at the same time aborts the process, as `get()` does if none is registered.
template <typename Type>
class SharedInstance
{
public:
    explicit SharedInstance(Type &instance)
    {
        if (s_instance)
            qFatal("a shared instance of this type is already registered");
        s_instance = &instance;
    }

    ~SharedInstance() { s_instance = nullptr; }
    SharedInstance(const SharedInstance &) = delete;
    SharedInstance &operator=(const SharedInstance &) = delete;

    [[nodiscard]] static Type &get()
    {
        if (!s_instance)
            qFatal("no shared instance of this type is registered");
        return *s_instance;
    }

private:
    static inline Type *s_instance = nullptr;
};
