// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnDemandChime.h"

#include "Module.h"
#include "SoundModule.h"

#include <utility>

OnDemandChime::OnDemandChime(const QString &soundsFolder)
    : OnDemandChime([soundsFolder] { return Module::make(&SoundModule::makeChime, soundsFolder); })
{
}

OnDemandChime::OnDemandChime(OnDemand<Chime>::Make make)
    : m_chime(std::move(make))
{
}

void OnDemandChime::play(const QString &name)
{
    if (Chime *chime = m_chime.get())
        chime->play(name);
}
