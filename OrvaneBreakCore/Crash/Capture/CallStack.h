// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <ucontext.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>

class CrashText;
class ModuleSymbols;

/// The call stack of a thread, innermost frame first. After prepare(), capturing and writing it neither locks
/// nor allocates: the unwinder finds its tables with _dl_find_object(), which is safe in signal handlers.
class CallStack
{
public:
    /// Loads what the unwinder needs. Called once, outside signal handlers.
    static void prepare();

    /// Captures the stack of the current thread, beginning with the caller of this function.
    void captureHere();

    /// Captures the stack of the current thread where the signal that `information` describes interrupted it.
    /// Changes the registers in `context` meanwhile. A fault during the capture leaves the frames found so
    /// far.
    void captureInterrupted(ucontext_t &context, const siginfo_t &information);

    /// Removes the innermost frames up to the function that threw: those of the terminate handler, then those
    /// of the C++ runtime.
    void dropThrowing();

    /// Writes at most `maxFrames` frames, one per line without a final line feed: number, module, "@" and the
    /// beginning of its build's id, address in the module's file and, where its file has them, the function's
    /// name and offset. Opens the files of all modules but `program`.
    void appendTo(CrashText &text, std::size_t maxFrames, const ModuleSymbols &program) const;

private:
    struct Collector;

    void append(std::uintptr_t address);

    // More than a report has, because dropThrowing() removes some.
    std::array<std::uintptr_t, 48> m_frames = {};
    std::size_t m_count = 0;
};
