// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateDownload.h"

#include "Http.h"

#include <QCryptographicHash>

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr int mostVainAttempts = 5;
constexpr Interval totalLimit = 2h;
constexpr Interval limitTolerance = 1min;
constexpr Interval firstPause = 1s;
constexpr Interval pauseTolerance = 500ms;
constexpr qsizetype versionLength = 64;
constexpr qsizetype digestLength = 16;

bool isFitForName(QChar character)
{
    return character == u'.' || character == u'-' ||
           (character.unicode() < 128 && character.isLetterOrNumber());
}

std::string nameOf(const UpdateDownload::Wanted &wanted)
{
    QString version = wanted.version.left(versionLength);
    std::ranges::replace_if(version, [](QChar character) { return !isFitForName(character); }, u'_');
    const QByteArray identity = wanted.version.toUtf8() + '\n' + wanted.address.toEncoded() + '\n' +
                                QByteArray::number(wanted.length);
    const QByteArray digest = QCryptographicHash::hash(identity, QCryptographicHash::Sha256).toHex();
    return (version.toLatin1() + '-' + digest.first(digestLength)).toStdString();
}

} // namespace

UpdateDownload::UpdateDownload(Downloads &downloads, RunLoop &runLoop, std::filesystem::path folder)
    : m_downloads(downloads)
    , m_runLoop(runLoop)
    , m_folder(std::move(folder))
{
}

void UpdateDownload::start(Wanted wanted, Progress onProgress, Completion onFinished)
{
    cancel();
    m_wanted = std::move(wanted);
    m_onProgress = std::move(onProgress);
    m_onFinished = std::move(onFinished);
    m_most = 0;
    m_vainAttempts = 0;
    if (!Http::isAllowed(m_wanted.address) || m_wanted.length <= 0) {
        fail();
        return;
    }
    m_file = PartialFile::open(m_folder, nameOf(m_wanted));
    if (!m_file || (m_file->size() > m_wanted.length && !m_file->clear())) {
        fail();
        return;
    }
    m_received = m_file->size();
    if (m_received == m_wanted.length) {
        end(Downloads::End::Complete);
        return;
    }
    m_limit = m_runLoop.scheduleOnce(m_runLoop.now() + totalLimit, limitTolerance, [this] { fail(); });
    ask();
}

void UpdateDownload::cancel()
{
    ++m_start;
    m_exchange.reset();
    m_pause.invalidate();
    m_limit.invalidate();
    m_file.reset();
}

void UpdateDownload::ask()
{
    m_most = std::max(m_most, m_received);
    m_exchange = m_downloads.get(m_wanted.address, m_received,
                                 {[this](qint64 offset) { begin(offset); },
                                  [this](const QByteArray &bytes) { receive(bytes); },
                                  [this](Downloads::End how) { end(how); }});
}

void UpdateDownload::begin(qint64 offset)
{
    if (offset == m_received)
        return;
    if (!m_file->clear()) {
        failWithoutFile();
        return;
    }
    m_received = 0;
    tell();
}

void UpdateDownload::receive(const QByteArray &bytes)
{
    if (bytes.size() > m_wanted.length - m_received || !m_file->append(bytes)) {
        failWithoutFile();
        return;
    }
    m_received += bytes.size();
    tell();
}

void UpdateDownload::end(Downloads::End end)
{
    m_exchange.reset();
    if (m_received == m_wanted.length) {
        std::optional<QByteArray> archive = m_file->read(m_wanted.length);
        m_file->remove();
        finish(std::move(archive));
    } else if (end == Downloads::End::Refused) {
        fail();
    } else if (end == Downloads::End::OtherRange && !m_file->clear()) {
        failWithoutFile();
    } else {
        m_received = end == Downloads::End::OtherRange ? 0 : m_received;
        tryAgain();
    }
}

void UpdateDownload::tryAgain()
{
    m_vainAttempts = m_received > m_most ? 0 : m_vainAttempts + 1;
    if (m_vainAttempts == mostVainAttempts) {
        fail();
        return;
    }
    const Interval pause = firstPause * (1 << std::max(0, m_vainAttempts - 1));
    m_pause = m_runLoop.scheduleOnce(m_runLoop.now() + pause, pauseTolerance, [this] { ask(); });
}

void UpdateDownload::tell()
{
    // A copy: what is called may start another download.
    const Progress onProgress = m_onProgress;
    if (onProgress)
        onProgress(m_received);
}

void UpdateDownload::fail()
{
    finish(std::nullopt);
}

void UpdateDownload::failWithoutFile()
{
    m_file->remove();
    fail();
}

void UpdateDownload::finish(std::optional<QByteArray> archive)
{
    cancel();
    QMetaObject::invokeMethod(
        this,
        [this, start = m_start, archive = std::move(archive)]() mutable {
            if (start != m_start)
                return;
            m_onProgress = nullptr;
            const Completion onFinished = std::exchange(m_onFinished, nullptr);
            onFinished(std::move(archive));
        },
        Qt::QueuedConnection);
}
