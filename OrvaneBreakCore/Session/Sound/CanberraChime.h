// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Chime.h"

#include <atomic>
#include <memory>

/// Plays sounds through the desktop's sound server (PulseAudio or PipeWire), or directly on a sound card
/// where there is no server. Each sound has a thread, which connects to the server and ends with the sound.
/// User-interface thread only.
class CanberraChime final : public Chime
{
public:
    /// The sound `name` is the file `name`.wav in `soundsFolder`.
    explicit CanberraChime(const QString &soundsFolder);

    /// A sound that is playing continues, and ends with the process at the latest. Neither the destructor nor
    /// the end of the process waits for it, even if the sound server hangs.
    ~CanberraChime() override = default;

    /// Plays nothing while another sound is playing. A server that does not answer counts as playing until
    /// the sound library gives up, after half a minute.
    void play(const QString &name) override;

private:
    QString m_soundsFolder;
    /// Shared with the playing thread, which may outlive the chime.
    std::shared_ptr<std::atomic<bool>> m_isPlaying = std::make_shared<std::atomic<bool>>(false);
};
