// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <ucontext.h>

#include <bit>
#include <cstdint>

/// The registers of a thread when a signal interrupted it, in the context from which the handler returns and
/// from which the unwinder continues. Safe in signal handlers.
class InterruptedThread
{
public:
    explicit InterruptedThread(ucontext_t &context)
        : m_registers(context.uc_mcontext)
    {
    }

#if defined(__x86_64__)
    [[nodiscard]] std::uintptr_t programCounter() const
    {
        return static_cast<std::uintptr_t>(m_registers.gregs[REG_RIP]);
    }

    /// Goes back to the call that has just reached the program counter, which is then inside of the calling
    /// instruction. Reads the thread's stack, and faults when it is unreadable.
    void returnToCaller()
    {
        greg_t &stackPointer = m_registers.gregs[REG_RSP];
        m_registers.gregs[REG_RIP] = *std::bit_cast<const volatile greg_t *>(stackPointer) - 1;
        stackPointer += sizeof(greg_t);
    }
#elif defined(__aarch64__)
    [[nodiscard]] std::uintptr_t programCounter() const { return m_registers.pc; }
    void returnToCaller() { m_registers.pc = m_registers.regs[30] - 1; }
#else
#error "Unsupported processor"
#endif

private:
    mcontext_t &m_registers;
};
