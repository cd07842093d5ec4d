// SPDX-License-Identifier: GPL-3.0-or-later
#include "CallStack.h"

#include "BuildId.h"
#include "CrashText.h"
#include "InterruptedThread.h"
#include "ModuleSymbols.h"

#include <dlfcn.h>
#include <unwind.h>

#include <algorithm>
#include <bit>
#include <exception>
#include <optional>
#include <string_view>

namespace {

/// Names of template instances can be very long.
constexpr std::size_t maxNameLength = 240;

/// In bytes; enough to tell builds apart.
constexpr std::size_t buildLength = 4;

/// The file name, because the folders may name the user.
std::string_view fileName(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

struct Module
{
    const link_map *map = nullptr; ///< Null for code outside any file.
    std::span<const char> image;   ///< What of its file is mapped.

    [[nodiscard]] bool isProgram() const { return map && map->l_name[0] == '\0'; }

    [[nodiscard]] std::string_view name() const
    {
        if (!map)
            return "?";
        return isProgram() ? std::string_view("orvanebreak") : fileName(map->l_name);
    }

    [[nodiscard]] std::uintptr_t addressInFile(std::uintptr_t address) const
    {
        return address - (map ? map->l_addr : 0);
    }
};

Module moduleOf(std::uintptr_t address)
{
    dl_find_object found = {};
    // The unwinder uses this function, too: it is the only one that takes no lock.
    const bool isFound = _dl_find_object(std::bit_cast<void *>(address), &found) == 0;
    if (!isFound)
        return {};
    const auto *begin = static_cast<const char *>(found.dlfo_map_start);
    return {found.dlfo_link_map, {begin, static_cast<const char *>(found.dlfo_map_end)}};
}

/// Whether a call led to `address`, where there is no code: it is outside any module, or the processor could
/// not read it as code.
bool isWithoutCode(std::uintptr_t address, const siginfo_t &information)
{
    const bool isFault = information.si_signo == SIGSEGV && information.si_code > 0;
    return !moduleOf(address).map ||
           (isFault && std::bit_cast<std::uintptr_t>(information.si_addr) == address);
}

void appendName(CrashText &text, const ModuleSymbols &symbols, std::uintptr_t address)
{
    const std::optional<ModuleSymbols::Symbol> symbol = symbols.find(address);
    if (symbol)
        text.append(" ")
            .append(symbol->name.substr(0, maxNameLength))
            .append(" + ")
            .appendDecimal(symbol->offset);
}

template <typename Function>
const link_map *moduleOfFunction(Function *function)
{
    return moduleOf(reinterpret_cast<std::uintptr_t>(function)).map;
}

} // namespace

struct CallStack::Collector
{
    CallStack &stack;
    std::optional<std::uintptr_t> skipUntil; ///< Frames up to the one at this address are skipped.
    int skipCount = 0;                       ///< The number of frames to skip in any case.

    static _Unwind_Reason_Code collect(_Unwind_Context *context, void *self)
    {
        return static_cast<Collector *>(self)->take(context);
    }

    _Unwind_Reason_Code take(_Unwind_Context *context)
    {
        int isBeforeInstruction = 0;
        const std::uintptr_t address = _Unwind_GetIPInfo(context, &isBeforeInstruction);
        if (address == 0)
            return _URC_END_OF_STACK;
        if (skipCount-- > 0)
            return _URC_NO_REASON;
        if (skipUntil) {
            if (address == *skipUntil)
                skipUntil.reset();
            return _URC_NO_REASON;
        }
        // The return address may already belong to the next function.
        stack.append(isBeforeInstruction ? address : address - 1);
        return stack.m_count < stack.m_frames.size() ? _URC_NO_REASON : _URC_END_OF_STACK;
    }
};

void CallStack::prepare()
{
    CallStack unused;
    unused.captureHere();
}

void CallStack::captureHere()
{
    m_count = 0;
    Collector collector{*this, std::nullopt, 1};
    _Unwind_Backtrace(&Collector::collect, &collector);
}

void CallStack::captureInterrupted(ucontext_t &context, const siginfo_t &information)
{
    m_count = 0;
    const mcontext_t registers = context.uc_mcontext;
    InterruptedThread thread(context);
    append(thread.programCounter());
    // The unwinder cannot continue from a place without code, but it can from the call that led there.
    if (isWithoutCode(thread.programCounter(), information)) {
        thread.returnToCaller();
        append(thread.programCounter());
    }
    Collector collector{*this, thread.programCounter()};
    _Unwind_Backtrace(&Collector::collect, &collector);
    context.uc_mcontext = registers;
}

void CallStack::dropThrowing()
{
    const link_map *runtime = moduleOfFunction(&std::terminate);
    const link_map *unwinder = moduleOfFunction(&_Unwind_Backtrace);
    const auto end = m_frames.begin() + static_cast<std::ptrdiff_t>(m_count);
    const auto isThrowing = [&](std::uintptr_t frame) {
        const link_map *map = moduleOf(frame).map;
        return map == runtime || map == unwinder;
    };
    const auto runtimeFrame = std::find_if(m_frames.begin(), end, isThrowing);
    const auto thrower = std::find_if_not(runtimeFrame, end, isThrowing);
    if (thrower == end)
        return;
    std::copy(thrower, end, m_frames.begin());
    m_count = static_cast<std::size_t>(end - thrower);
}

void CallStack::appendTo(CrashText &text, std::size_t maxFrames, const ModuleSymbols &program) const
{
    const std::size_t count = std::min(m_count, maxFrames);
    for (std::size_t index = 0; index < count; ++index) {
        const Module module = moduleOf(m_frames[index]);
        const std::span<const unsigned char> build = buildIdOf(module.image);
        const std::uintptr_t address = module.addressInFile(m_frames[index]);
        text.append(index == 0 ? "" : "\n").appendDecimal(index).append(" ").append(module.name());
        if (!build.empty())
            text.append("@").appendBytes(build.first(std::min(build.size(), buildLength)));
        text.append(" ").appendHexadecimal(address);
        if (module.isProgram()) {
            appendName(text, program, address);
        } else if (!build.empty() && module.map->l_name[0] == '/') {
            // An update may have replaced the file since it was loaded.
            const ModuleSymbols symbols(module.map->l_name);
            if (std::ranges::equal(buildIdOf(symbols.image()), build))
                appendName(text, symbols, address);
        }
    }
}

void CallStack::append(std::uintptr_t address)
{
    if (m_count < m_frames.size())
        m_frames[m_count++] = address;
}
