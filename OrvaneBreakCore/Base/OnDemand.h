// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <utility>

/// An object that is made at its first use. One thread.
template <typename Object>
class OnDemand
{
public:
    using Make = std::function<std::unique_ptr<Object>()>;

    explicit OnDemand(Make make)
        : m_make(std::move(make))
    {
    }

    /// The object; makes it first if there is none yet. Null when `make` returned null; the next call tries
    /// again.
    [[nodiscard]] Object *get()
    {
        if (!m_object)
            m_object = m_make();
        return m_object.get();
    }

private:
    Make m_make;
    std::unique_ptr<Object> m_object;
};
