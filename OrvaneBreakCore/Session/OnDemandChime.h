// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Chime.h"
#include "Module.h"
#include "SoundModule.h"

#include <functional>
#include <memory>

/// The sounds through the module for them, which the first sound loads. Without the module nothing is played,
/// and the next sound tries again. User-interface thread only.
class OnDemandChime final : public Chime
{
public:
    /// The sound `name` is the file `name`.wav in `soundsFolder`.
    explicit OnDemandChime(QString soundsFolder,
                           std::function<const SoundModule *()> load = &Module::load<SoundModule>);

    void play(const QString &name) override;

private:
    QString m_soundsFolder;
    std::function<const SoundModule *()> m_load;
    std::unique_ptr<Chime> m_chime;
};
