// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ModuleInterface.h"

#include <QByteArrayView>

#include <memory>

class ArchiveReader;

/// Interface of the module that reads archives.
class ArchiveModule : public ModuleInterface
{
public:
    static constexpr const char *fileName = "archive.so";

    /// Opens any `bytes`, which outlive the reader. Any thread.
    [[nodiscard]] virtual std::unique_ptr<ArchiveReader> open(QByteArrayView bytes) const = 0;
};

Q_DECLARE_INTERFACE(ArchiveModule, "OrvaneBreak.ArchiveModule")
