// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ModuleInterface.h"

#include <QByteArrayView>

#include <memory>

class ArchiveReader;

/// What the module for archives offers.
class ArchiveModule : public ModuleInterface
{
public:
    static constexpr const char *fileName = "archive.so";

    /// A reader of any `bytes`, which outlive it. Any thread.
    [[nodiscard]] virtual std::unique_ptr<ArchiveReader> open(QByteArrayView bytes) const = 0;
};

Q_DECLARE_INTERFACE(ArchiveModule, "OrvaneBreak.ArchiveModule")
