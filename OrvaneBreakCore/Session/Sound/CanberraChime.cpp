// SPDX-License-Identifier: GPL-3.0-or-later
#include "CanberraChime.h"

#include "SignalStack.h"
#include "SpareDescriptors.h"

#include <QFile>
#include <QGuiApplication>

#include <canberra.h>
#include <glob.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// The thread gives up a server that stops playing in the middle of a sound after this time.
constexpr std::chrono::seconds maxSoundDuration{15};

/// Everything that the playing thread needs, by value: the thread may outlive every object.
struct Sound
{
    std::string name;
    std::string file;
    std::string applicationName;
    std::string applicationId;
};

struct ContextDeleter
{
    void operator()(ca_context *context) const { ca_context_destroy(context); }
};

using Context = std::unique_ptr<ca_context, ContextDeleter>;

/// The end of a sound, which the sound library reports.
class PlaybackEnd
{
public:
    void reach()
    {
        const std::scoped_lock lock(m_mutex);
        m_isReached = true;
        m_changed.notify_one();
    }

    void wait()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, maxSoundDuration, [this] { return m_isReached; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isReached = false;
};

void playbackFinished(ca_context * /*context*/, std::uint32_t /*id*/, int /*error*/, void *end)
{
    static_cast<PlaybackEnd *>(end)->reach();
}

/// Whether this user may use a sound card. Without one the cards' sound library prints complaints on standard
/// error.
bool hasSoundCard()
{
    glob_t nodes = {};
    bool isUsable = false;
    if (glob("/dev/snd/pcm*p", 0, nullptr, &nodes) == 0) {
        for (std::size_t index = 0; index < nodes.gl_pathc; ++index)
            isUsable = isUsable || access(nodes.gl_pathv[index], R_OK | W_OK) == 0;
    }
    globfree(&nodes);
    return isUsable;
}

/// A connection to the sound server or card behind `driver`; null when there is none.
Context openContext(const char *driver, const Sound &sound)
{
    ca_context *created = nullptr;
    if (ca_context_create(&created) != CA_SUCCESS)
        return nullptr;
    Context context(created);
    if (ca_context_set_driver(created, driver) != CA_SUCCESS ||
        ca_context_change_props(created, CA_PROP_APPLICATION_NAME, sound.applicationName.c_str(),
                                CA_PROP_APPLICATION_ID, sound.applicationId.c_str(), nullptr) != CA_SUCCESS ||
        ca_context_open(created) != CA_SUCCESS)
        return nullptr;
    return context;
}

bool startPlaying(ca_context *context, const Sound &sound, PlaybackEnd &end)
{
    ca_proplist *properties = nullptr;
    if (ca_proplist_create(&properties) != CA_SUCCESS)
        return false;
    ca_proplist_sets(properties, CA_PROP_MEDIA_NAME, sound.name.c_str());
    ca_proplist_sets(properties, CA_PROP_MEDIA_FILENAME, sound.file.c_str());
    ca_proplist_sets(properties, CA_PROP_MEDIA_ROLE, "event");
    ca_proplist_sets(properties, CA_PROP_CANBERRA_CACHE_CONTROL, "never");
    const int result = ca_context_play_full(context, 0, properties, &playbackFinished, &end);
    ca_proplist_destroy(properties);
    return result == CA_SUCCESS;
}

void playToTheEnd(const Sound &sound)
{
    if (access(sound.file.c_str(), R_OK) != 0)
        return;
    // Destroyed after the context, which may report the end until then.
    PlaybackEnd end;
    Context context = openContext("pulse", sound);
    if (!context && hasSoundCard())
        context = openContext("alsa", sound);
    if (context && startPlaying(context.get(), sound, end))
        end.wait();
}

} // namespace

CanberraChime::CanberraChime(const QString &soundsFolder)
    : m_soundsFolder(soundsFolder)
{
}

void CanberraChime::play(const QString &name)
{
    if (!SpareDescriptors::sufficeForThread() || m_isPlaying->exchange(true))
        return;
    Sound sound{name.toStdString(), QFile::encodeName(m_soundsFolder + u'/' + name + u".wav"_s).toStdString(),
                QCoreApplication::applicationName().toStdString(),
                QGuiApplication::desktopFileName().toStdString()};
    try {
        // Joining the thread would wait for a server that hangs.
        std::thread([sound = std::move(sound), isPlaying = m_isPlaying] {
            const SignalStack signalStack;
            playToTheEnd(sound);
            *isPlaying = false;
        }).detach();
    } catch (const std::system_error &) {
        *m_isPlaying = false;
    }
}
