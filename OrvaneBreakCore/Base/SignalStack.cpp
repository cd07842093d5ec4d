// SPDX-License-Identifier: GPL-3.0-or-later
#include "SignalStack.h"

#include <csignal>

namespace {

/// The unwinder uses about ten kilobytes, and a fault inside it runs the handler again on the same stack.
constexpr std::size_t stackSize = std::size_t{64} * 1024;

} // namespace

struct SignalStack::Previous
{
    stack_t stack = {};
};

SignalStack::SignalStack()
    : m_memory(std::make_unique<std::byte[]>(stackSize))
    , m_previous(std::make_unique<Previous>())
{
    stack_t stack = {};
    stack.ss_sp = m_memory.get();
    stack.ss_size = stackSize;
    sigaltstack(&stack, &m_previous->stack);
}

SignalStack::~SignalStack()
{
    sigaltstack(&m_previous->stack, nullptr);
}
