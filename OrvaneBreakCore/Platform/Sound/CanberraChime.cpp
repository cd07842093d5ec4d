// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Sound/CanberraChime.h"

#include <QDir>
#include <QFile>

#include <chrono>
#include <future>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include <canberra.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Longer than any sound of ours; a server that never tells the end is not waited for.
constexpr auto patience = 10s;

struct ContextDeleter
{
    void operator()(ca_context *context) const { ca_context_destroy(context); }
};

using Context = std::unique_ptr<ca_context, ContextDeleter>;

/// A context that is connected to `driver`, or nothing.
Context connectedContext(const char *driver)
{
    ca_context *created = nullptr;
    if (ca_context_create(&created) != CA_SUCCESS)
        return nullptr;
    Context context(created);
    const bool isReady = ca_context_set_driver(created, driver) == CA_SUCCESS &&
                         ca_context_change_props(created, CA_PROP_APPLICATION_NAME, "OrvaneBreak",
                                                 CA_PROP_APPLICATION_ID, ORVANE_APP_ID, nullptr) == CA_SUCCESS &&
                         ca_context_open(created) == CA_SUCCESS;
    return isReady ? std::move(context) : nullptr;
}

/// Without a card the ALSA library complains on the standard error, so it is not even tried.
bool hasSoundCard()
{
    return !QDir(u"/dev/snd"_s).entryList({u"pcm*p"_s}, QDir::System).isEmpty();
}

void soundEnded(ca_context * /*context*/, std::uint32_t /*identifier*/, int /*status*/, void *ended)
{
    static_cast<std::promise<void> *>(ended)->set_value();
}

/// Plays `file` and returns when it has ended or cannot be played.
void playToTheEnd(const QByteArray &file)
{
    // Declared before the context: destroying the context reports what is still playing as ended.
    std::promise<void> ended;
    Context context = connectedContext("pulse");
    if (!context && hasSoundCard())
        context = connectedContext("alsa");
    ca_proplist *created = nullptr;
    if (!context || ca_proplist_create(&created) != CA_SUCCESS)
        return;
    const std::unique_ptr<ca_proplist, decltype(&ca_proplist_destroy)> properties(created, &ca_proplist_destroy);
    ca_proplist_sets(created, CA_PROP_MEDIA_FILENAME, file.constData());
    ca_proplist_sets(created, CA_PROP_MEDIA_ROLE, "event");
    ca_proplist_sets(created, CA_PROP_EVENT_DESCRIPTION, "OrvaneBreak");
    ca_proplist_sets(created, CA_PROP_CANBERRA_CACHE_CONTROL, "never");
    if (ca_context_play_full(context.get(), 0, created, soundEnded, &ended) == CA_SUCCESS)
        ended.get_future().wait_for(patience);
}

} // namespace

CanberraChime::CanberraChime(QString soundsFolder) : m_soundsFolder(std::move(soundsFolder)) {}

void CanberraChime::play(const QString &name)
{
    const QString file = m_soundsFolder + u'/' + name + u".wav"_s;
    if (!QFile::exists(file))
        return;
    try {
        // Detached: a server that hangs must not keep the program from ending.
        std::thread(playToTheEnd, QFile::encodeName(file)).detach();
    } catch (const std::system_error &) {
        // No thread to be had: no sound.
    }
}
