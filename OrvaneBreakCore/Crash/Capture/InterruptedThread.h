// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <ucontext.h>

#include <bit>
#include <cstdint>

/// The registers of a thread when a signal interrupted it. Safe in signal handlers.
class InterruptedThread
{
public:
    explicit InterruptedThread(const ucontext_t &context)
        : m_registers(context.uc_mcontext)
    {
    }

#if defined(__x86_64__)
    [[nodiscard]] std::uintptr_t programCounter() const
    {
        return static_cast<std::uintptr_t>(m_registers.gregs[REG_RIP]);
    }

    /// The return address of the call that has just reached the program counter. Reads the thread's stack,
    /// and faults when it is unreadable.
    [[nodiscard]] std::uintptr_t returnAddressOfCall() const
    {
        return *std::bit_cast<const volatile std::uintptr_t *>(m_registers.gregs[REG_RSP]);
    }
#elif defined(__aarch64__)
    [[nodiscard]] std::uintptr_t programCounter() const { return m_registers.pc; }
    [[nodiscard]] std::uintptr_t returnAddressOfCall() const { return m_registers.regs[30]; }
#else
#error "Unsupported processor"
#endif

private:
    const mcontext_t &m_registers;
};
