// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Chime.h"

/// Plays sounds through libcanberra. Connecting to a sound server can take as long as the server likes, so each sound has
/// a thread of its own, which lives until the sound has ended; nothing is left that wakes up. A sound that is asked for
/// while another is playing is played as well.
class CanberraChime final : public Chime
{
public:
    /// The sound named N is the file N.wav in `soundsFolder`.
    explicit CanberraChime(QString soundsFolder);

    void play(const QString &name) override;

private:
    QString m_soundsFolder;
};
