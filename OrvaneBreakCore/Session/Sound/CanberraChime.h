// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Chime.h"

#include <atomic>
#include <memory>

/// Plays the sounds through the sound server of the desktop (PulseAudio or PipeWire), or straight on a sound
/// card where there is no server. A thread of its own does all of it, lives no longer than the sound and
/// takes the connection to the server with it. User-interface thread only.
class CanberraChime final : public Chime
{
public:
    /// The sound `name` is the file `name`.wav in `soundsFolder`.
    explicit CanberraChime(const QString &soundsFolder);

    /// A sound that is under way rings on, and ends with the process at the latest: neither the destructor
    /// nor the end of the process waits for it, even when the sound server hangs.
    ~CanberraChime() override = default;

    /// While a sound is under way another one is not played. A server that does not answer counts as one: the
    /// sound library gives it up after half a minute.
    void play(const QString &name) override;

private:
    QString m_soundsFolder;
    /// Shared with the playing thread, which may outlive the chime.
    std::shared_ptr<std::atomic<bool>> m_isPlaying = std::make_shared<std::atomic<bool>>(false);
};
