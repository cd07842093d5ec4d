// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArchiveModule.h"

#include "LibarchiveReader.h"

#include <QObject>

class ArchivePlugin final : public QObject, public ArchiveModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "OrvaneBreak.ArchiveModule" FILE "module.json")
    Q_INTERFACES(ArchiveModule)

public:
    [[nodiscard]] std::unique_ptr<ArchiveReader> open(QByteArrayView bytes) const override
    {
        return std::make_unique<LibarchiveReader>(bytes);
    }
};

#include "ArchiveModule.moc"
