// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QStringDecoder>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

// The interface of libFuzzer. In other builds Driver.cpp replaces it: one program contains all targets, and
// their functions get the name of their target, ORVANE_FUZZ_TARGET, as a prefix.
// NOLINTBEGIN(readability-identifier-naming)

#ifdef ORVANE_FUZZ_TARGET
#define ORVANE_JOINED(first, second) first##second
#define ORVANE_OF_TARGET(target, name) ORVANE_JOINED(target, name)
#define LLVMFuzzerTestOneInput ORVANE_OF_TARGET(ORVANE_FUZZ_TARGET, TestOneInput)
#define LLVMFuzzerCustomMutator ORVANE_OF_TARGET(ORVANE_FUZZ_TARGET, CustomMutator)
#endif

/// Tests one input. Returns 0; a failed `require` ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

/// Changes the input in `data` and returns its new size. Optional for a target.
extern "C" [[gnu::weak]] std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size,
                                                             std::size_t maxSize, unsigned seed);

/// The standard mutation, for a target's own mutator to call.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t maxSize);

// NOLINTEND(readability-identifier-naming)

/// One target in the program FuzzTests; `mutate` is null for the standard mutation.
struct FuzzTarget
{
    const char *name;
    decltype(LLVMFuzzerTestOneInput) *run;
    decltype(LLVMFuzzerCustomMutator) *mutate;
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

/// Aborts the process if the requirement is not met, and prints it on standard error.
inline void require(bool isMet, const char *requirement)
{
    if (isMet)
        return;
    std::fprintf(stderr, "not met: %s\n", requirement);
    std::abort();
}

/// How many inputs the program accepted as valid. A test in which none or all were accepted proves little.
inline std::size_t acceptedInputs = 0;

/// Decodes UTF-8 and keeps a byte order mark at its beginning.
inline QString everyCharacter(const QByteArray &text)
{
    QStringDecoder decode(QStringDecoder::Utf8,
                          QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    return decode(text);
}

inline QByteArray fuzzInput(const std::uint8_t *data, std::size_t size)
{
    return {reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)};
}
