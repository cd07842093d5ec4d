// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>

/// Gives the current thread a stack of its own for signal handlers, so that a thread whose stack has
/// overflowed can still report it. Taken away at the end of this object's life, on the same thread; a thread
/// that had such a stack before gets that one back.
class SignalStack
{
public:
    SignalStack();
    ~SignalStack();
    SignalStack(const SignalStack &) = delete;
    SignalStack &operator=(const SignalStack &) = delete;

private:
    struct Previous;
    std::unique_ptr<std::byte[]> m_memory;
    std::unique_ptr<Previous> m_previous;
};
