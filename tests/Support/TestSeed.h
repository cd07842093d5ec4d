// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <cstdio>
#include <optional>
#include <random>

/// The seed that the environment's ORVANE_TEST_SEED asks for: its number, or a new one each time if it is
/// "random". Nothing if it is not set.
inline std::optional<quint32> requestedSeed()
{
    const QByteArray wish = qgetenv("ORVANE_TEST_SEED");
    if (wish.isEmpty())
        return std::nullopt;
    return wish == "random" ? std::random_device()() : wish.toUInt();
}

/// The seed of a test's random choices, which it also prints: the requested one, otherwise always the same,
/// so that one tree is judged the same way each time.
inline quint32 testSeed()
{
    const quint32 seed = requestedSeed().value_or(1);
    std::printf("seed %u; ORVANE_TEST_SEED repeats it\n", seed);
    std::fflush(stdout);
    return seed;
}
