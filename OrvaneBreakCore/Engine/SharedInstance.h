// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

/// Names one instance as the shared one of its type for the life of this object. Naming a second one at the
/// same time, or asking for one that nobody named, stops the process.
template <typename Type>
class SharedInstance
{
public:
    explicit SharedInstance(Type &instance)
    {
        if (s_instance)
            qFatal("a shared instance of this type exists already");
        s_instance = &instance;
    }

    ~SharedInstance() { s_instance = nullptr; }
    SharedInstance(const SharedInstance &) = delete;
    SharedInstance &operator=(const SharedInstance &) = delete;

    [[nodiscard]] static Type &get()
    {
        if (!s_instance)
            qFatal("the shared instance of this type has not been made");
        return *s_instance;
    }

private:
    static inline Type *s_instance = nullptr;
};
