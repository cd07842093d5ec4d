// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnDemandChime.h"

#include <utility>

OnDemandChime::OnDemandChime(QString soundsFolder, std::function<const SoundModule *()> load)
    : m_soundsFolder(std::move(soundsFolder))
    , m_load(std::move(load))
{
}

void OnDemandChime::play(const QString &name)
{
    if (!m_chime) {
        if (const SoundModule *module = m_load())
            m_chime = module->makeChime(m_soundsFolder);
    }
    if (m_chime)
        m_chime->play(name);
}
