// SPDX-License-Identifier: GPL-3.0-or-later
#include "Crashes.h"

#include "SignalStack.h"

#include <malloc.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <functional>
#include <map>
#include <stdexcept>
#include <thread>

namespace {

constexpr int deepCalls = 50;

class Silent final : public std::exception
{
public:
    [[nodiscard]] const char *what() const noexcept override { return ""; }
};

/// Volatile, so that the compiler keeps allocations and calls.
void *volatile allocated = nullptr;
volatile int calls = 0;
void (*volatile nowhere)() = nullptr;

[[gnu::noinline]] int recurseForEver(int depth)
{
    volatile char filling[4096] = {};
    filling[depth % 4096] = 1;
    // The compiler rejects a recursion that is obviously endless.
    return (nowhere ? 0 : recurseForEver(depth + 1)) + filling[0];
}

[[gnu::noinline]] void callNowhere()
{
    nowhere();
    calls = 1;
}

/// Calls an address in the program that is not code.
void callData()
{
    static char data[16];
    nowhere = reinterpret_cast<void (*)()>(data);
    callNowhere();
}

[[gnu::noinline]] int recurse(int depth)
{
    const int before = calls;
    if (depth == 0)
        std::raise(SIGSEGV);
    else
        calls = recurse(depth - 1);
    return before + calls;
}

void inThread(const std::function<void()> &work)
{
    std::thread([&work] {
        const SignalStack stack;
        work();
    }).join();
}

[[gnu::noinline]] void freeWhatIsNotAllocated()
{
    static char place[64];
    allocated = place + 16;
    std::free(allocated);
    calls = 1;
}

/// The allocator aborts while it holds its lock, which it only takes in a process with several threads.
void corruptHeap()
{
    inThread([] {
        auto *last = static_cast<char *>(std::malloc(4000));
        std::memset(last + malloc_usable_size(last), 0xff, 16);
        for (std::size_t size = 100'000; size > 0; --size)
            allocated = std::malloc(size);
    });
}

/// Overwrites the frames above with invalid addresses, so that they cannot be unwound.
[[gnu::noinline]] void damageStack()
{
    volatile std::uintptr_t frame[2] = {};
    volatile std::uintptr_t *above = frame;
    for (int index = 0; index < 64; ++index)
        above[index] = 0x10;
    std::raise(SIGSEGV);
}

/// The empty statement prevents a tail call, so that this function stays on the stack.
[[gnu::noinline]] void crashAtOnce()
{
    std::raise(SIGSEGV);
    asm volatile("");
}

void crashTwice()
{
    std::thread other(crashAtOnce);
    crashAtOnce();
    other.join();
}

/// Ends a child process with the signal `number` by running `work` in it. With CLONE_VM and CLONE_VFORK it
/// uses the memory of this process, as after vfork().
void crashInChild(int flags, int (*work)(void *), int number)
{
    alignas(16) static char stack[256 * 1024];
    const pid_t child = clone(work, stack + sizeof stack, flags | SIGCHLD, nullptr);
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFSIGNALED(status) || WTERMSIG(status) != number)
        std::_Exit(3);
}

int raiseSegmentationFault(void * /*unused*/)
{
    return std::raise(SIGSEGV);
}

int terminateProcess(void * /*unused*/)
{
    std::terminate();
}

void throwText(const char *text)
{
    throw std::runtime_error(text);
}

void rethrow()
{
    try {
        throwText("twice");
    } catch (const std::exception &) {
        throw;
    }
}

const std::map<std::string, std::function<void()>> kinds = {
    {"overflow", [] { recurseForEver(0); }},
    {"thread overflow", [] { inThread([] { recurseForEver(0); }); }},
    {"deep", [] { recurse(deepCalls); }},
    {"nowhere", callNowhere},
    {"data", callData},
    {"bad free", freeWhatIsNotAllocated},
    {"corrupt heap", corruptHeap},
    {"throw exception", [] { throwText("the disk is tired"); }},
    {"throw string", [] { throw std::string("a text"); }},
    {"throw int", [] { throw 42; }},
    {"throw without reason", [] { throw Silent(); }},
    {"throw private", [] { throwText((std::string(std::getenv("HOME")) + "/notes\n---\nof anna").c_str()); }},
    {"throw Latin-1", [] { throwText("no file caf\xe9"); }},
    {"throw much", [] { throw std::string(std::size_t{2} * 1024 * 1024, 'x'); }},
    {"throw in thread", [] { inThread([] { throwText("elsewhere"); }); }},
    {"rethrow", rethrow},
    {"terminate", [] { std::terminate(); }},
    {"two threads", crashTwice},
    {"damaged stack", damageStack},
    {"child", [] { crashInChild(0, raiseSegmentationFault, SIGSEGV); }},
    {"terminate in child", [] { crashInChild(0, terminateProcess, SIGABRT); }},
    {"after a child in the same memory",
     [] {
         crashInChild(CLONE_VM | CLONE_VFORK, raiseSegmentationFault, SIGSEGV);
         std::raise(SIGFPE);
     }},
};

} // namespace

void crash(const std::string &kind)
{
    const std::string signal = "signal ";
    const std::string threadSignal = "thread signal ";
    if (kind.starts_with(signal))
        std::raise(std::stoi(kind.substr(signal.size())));
    else if (kind.starts_with(threadSignal))
        inThread([&] { std::raise(std::stoi(kind.substr(threadSignal.size()))); });
    else
        kinds.at(kind)();
}
