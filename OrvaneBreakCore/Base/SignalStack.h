// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>

/// Gives the current thread an alternate signal stack, so that a signal handler can report the overflow of
/// the thread's stack. The destructor, on the same thread, restores the previous alternate stack, if any.
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
