// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QStringDecoder>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

// What libFuzzer calls, and what it offers. Driver.cpp stands in for it in every other build: one program
// with all targets, whose functions have the name of their target in front, ORVANE_FUZZ_TARGET.
// NOLINTBEGIN(readability-identifier-naming)

#ifdef ORVANE_FUZZ_TARGET
#define ORVANE_JOINED(first, second) first##second
#define ORVANE_OF_TARGET(target, name) ORVANE_JOINED(target, name)
#define LLVMFuzzerTestOneInput ORVANE_OF_TARGET(ORVANE_FUZZ_TARGET, TestOneInput)
#define LLVMFuzzerCustomMutator ORVANE_OF_TARGET(ORVANE_FUZZ_TARGET, CustomMutator)
#endif

/// Runs the subject of one target on one input. Returns 0; a broken promise ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

/// Makes another input out of the one in `data`; a target may have its own way. Returns the new size.
extern "C" [[gnu::weak]] std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size,
                                                             std::size_t largestSize, unsigned seed);

/// The usual way to do so, for the target's own to call.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t largestSize);

// NOLINTEND(readability-identifier-naming)

/// One target in the program of the tests; `changeInput` is null when the usual way serves.
struct FuzzTarget
{
    const char *name;
    decltype(LLVMFuzzerTestOneInput) *run;
    decltype(LLVMFuzzerCustomMutator) *changeInput;
};

/// The targets of this program, in no order.
inline std::vector<FuzzTarget> &fuzzTargets()
{
    static std::vector<FuzzTarget> targets;
    return targets;
}

#ifdef ORVANE_FUZZ_TARGET
#define ORVANE_TEXT_OF(name) #name
#define ORVANE_TEXT(name) ORVANE_TEXT_OF(name)
static const bool isKnownTarget = (fuzzTargets().push_back({ORVANE_TEXT(ORVANE_FUZZ_TARGET),
                                                            LLVMFuzzerTestOneInput, LLVMFuzzerCustomMutator}),
                                   true);
#endif

/// Ends the process, with `promise` on the standard error, when it was not kept for the input at hand.
inline void require(bool isKept, const char *promise)
{
    if (isKept)
        return;
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
}

/// How many inputs the subject took for what it expects. A test in which none was, or all were, tells little.
inline std::size_t acceptedInputs = 0;

/// Every character of a UTF-8 text, a byte order mark at its beginning included.
inline QString everyCharacter(const QByteArray &text)
{
    QStringDecoder decode(QStringDecoder::Utf8, QStringConverter::Flag::ConvertInitialBom);
    return decode(text);
}

inline QByteArray fuzzInput(const std::uint8_t *data, std::size_t size)
{
    return {reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)};
}
