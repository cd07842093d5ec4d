// SPDX-License-Identifier: GPL-3.0-or-later
#include "SoundModule.h"

#include "CanberraChime.h"

#include <QObject>

class SoundPlugin final : public QObject, public SoundModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "OrvaneBreak.SoundModule" FILE "module.json")
    Q_INTERFACES(SoundModule)

public:
    [[nodiscard]] std::unique_ptr<Chime> makeChime(const QString &soundsFolder) const override
    {
        return std::make_unique<CanberraChime>(soundsFolder);
    }
};

#include "SoundModule.moc"
