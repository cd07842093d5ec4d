// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <ucontext.h>

#include <array>
#include <cstddef>
#include <cstdint>

class CrashText;
class ProgramSymbols;

/// The calls that a thread is in, innermost first. Collecting and writing them neither locks nor allocates,
/// once prepare() was called: the unwinder finds its tables through _dl_find_object(), which is made for
/// signal handlers.
class CallStack
{
public:
    /// Loads what unwinding needs. Called once, outside of any signal handler.
    static void prepare();

    /// Collects the calls of the current thread, beginning with the caller of this function.
    void captureHere();

    /// Collects the calls of the current thread at the moment when a signal interrupted it. A fault on the
    /// way leaves the frames found so far.
    void captureInterrupted(const ucontext_t &context);

    /// Removes the innermost frames up to the one that threw: those of this module first, then those of the
    /// language's run-time library.
    void dropThrowing();

    /// Writes `most` frames at most, one a line and without a line feed at the end: number, module, address
    /// in the module's file and, for a function of ours, name and offset.
    void appendTo(CrashText &text, std::size_t most, const ProgramSymbols &symbols) const;

private:
    struct Collector;

    void append(std::uintptr_t address);

    // More than a report has, because some are dropped.
    std::array<std::uintptr_t, 48> m_frames = {};
    std::size_t m_count = 0;
};
