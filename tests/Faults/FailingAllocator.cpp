// SPDX-License-Identifier: GPL-3.0-or-later
#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// A library to preload that makes allocations fail. ORVANE_TEST_ALLOCATIONS holds five numbers: a seed, how
/// many allocations succeed first, the maximum number of failures, the failures per million, and the minimum
/// size in bytes of an allocation that counts. The same numbers fail the same allocations, if the threads run
/// in the same order. A normal exit writes the number of allocations that counted to the file
/// ORVANE_TEST_ALLOCATIONS_FILE.

#define REPLACED extern "C" __attribute__((visibility("default")))

// The C library's own functions, which need no lookup.
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t number, size_t size);
void *__libc_realloc(void *memory, size_t size);
void *__libc_memalign(size_t alignment, size_t size);
}

namespace {

constexpr std::uint64_t million = 1'000'000;

struct Plan
{
    std::uint64_t seed = 0;
    std::uint64_t first = UINT64_MAX;
    std::uint64_t maximum = 0;
    std::uint64_t rate = 0;
    std::uint64_t size = UINT64_MAX;
};

Plan plan;
std::atomic<std::uint64_t> counted = 0;
std::atomic<std::uint64_t> failed = 0;

std::uint64_t mixed(std::uint64_t number)
{
    number = (number ^ (number >> 30)) * 0xbf58476d1ce4e5b9U;
    number = (number ^ (number >> 27)) * 0x94d049bb133111ebU;
    return number ^ (number >> 31);
}

/// Counts an allocation; returns whether it fails.
bool fails(std::size_t size)
{
    if (size < plan.size)
        return false;
    const std::uint64_t number = ++counted;
    if (number <= plan.first || mixed(plan.seed * million + number) % million >= plan.rate ||
        failed >= plan.maximum)
        return false;
    ++failed;
    errno = ENOMEM;
    return true;
}

__attribute__((constructor)) void readPlan()
{
    const char *text = std::getenv("ORVANE_TEST_ALLOCATIONS");
    if (!text)
        return;
    Plan read;
    char *rest = nullptr;
    read.seed = std::strtoull(text, &rest, 10);
    read.first = std::strtoull(rest, &rest, 10);
    read.maximum = std::strtoull(rest, &rest, 10);
    read.rate = std::strtoull(rest, &rest, 10);
    read.size = std::strtoull(rest, &rest, 10);
    plan = read;
}

__attribute__((destructor)) void writeCount()
{
    const char *path = std::getenv("ORVANE_TEST_ALLOCATIONS_FILE");
    const std::uint64_t count = counted;
    plan = {};
    std::FILE *file = path ? std::fopen(path, "we") : nullptr;
    if (!file)
        return;
    std::fprintf(file, "%llu\n", static_cast<unsigned long long>(count));
    std::fclose(file);
}

} // namespace

REPLACED void *malloc(size_t size) noexcept
{
    return fails(size) ? nullptr : __libc_malloc(size);
}

REPLACED void *calloc(size_t number, size_t size) noexcept
{
    std::size_t bytes = 0;
    return !__builtin_mul_overflow(number, size, &bytes) && fails(bytes) ? nullptr
                                                                         : __libc_calloc(number, size);
}

REPLACED void *realloc(void *memory, size_t size) noexcept
{
    return fails(size) ? nullptr : __libc_realloc(memory, size);
}

REPLACED void *memalign(size_t alignment, size_t size) noexcept
{
    return fails(size) ? nullptr : __libc_memalign(alignment, size);
}

REPLACED void *aligned_alloc(size_t alignment, size_t size) noexcept
{
    return memalign(alignment, size);
}

REPLACED int posix_memalign(void **memory, size_t alignment, size_t size) noexcept
{
    const int error = errno;
    void *const result = memalign(alignment, size);
    errno = error;
    if (!result)
        return ENOMEM;
    *memory = result;
    return 0;
}
