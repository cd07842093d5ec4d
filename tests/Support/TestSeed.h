// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <cstdio>
#include <optional>
#include <random>

/// The seed in ORVANE_TEST_SEED, or a new one if that is "random"; nullopt if it is not set.
inline std::optional<quint32> requestedSeed()
{
    const QByteArray requested = qgetenv("ORVANE_TEST_SEED");
    if (requested.isEmpty())
        return std::nullopt;
    return requested == "random" ? std::random_device()() : requested.toUInt();
}

/// The requested seed, otherwise 1, so that a source tree always gives the same result. Prints it.
inline quint32 testSeed()
{
    const quint32 seed = requestedSeed().value_or(1);
    std::printf("seed %u; ORVANE_TEST_SEED repeats it\n", seed);
    std::fflush(stdout);
    return seed;
}
