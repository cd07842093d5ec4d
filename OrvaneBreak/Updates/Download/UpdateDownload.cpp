// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateDownload.h"

#include "Http.h"

#include <QCryptographicHash>

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr int maxFailedAttempts = 5;
constexpr Interval totalTimeout = 2h;
constexpr Interval timeoutTolerance = 1min;
constexpr Interval firstDelay = 1s;
constexpr Interval delayTolerance = 500ms;
constexpr qsizetype maxVersionLength = 64;
constexpr qsizetype digestLength = 16;

bool isAllowedInName(QChar character)
{
    return character == u'.' || character == u'-' ||
           (character.unicode() < 128 && character.isLetterOrNumber());
}

std::string fileName(const UpdateDownload::Request &request)
{
    QString version = request.version.left(maxVersionLength);
    std::ranges::replace_if(version, [](QChar character) { return !isAllowedInName(character); }, u'_');
    const QByteArray identity = request.version.toUtf8() + '\n' + request.address.toEncoded() + '\n' +
                                QByteArray::number(request.length);
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

void UpdateDownload::start(Request request, Progress onProgress, Completion onFinished)
{
    cancel();
    m_request = std::move(request);
    m_onProgress = std::move(onProgress);
    m_onFinished = std::move(onFinished);
    m_highestReceived = 0;
    m_failedAttempts = 0;
    if (!Http::isAllowed(m_request.address) || m_request.length <= 0) {
        fail();
        return;
    }
    m_file = PartialFile::open(m_folder, fileName(m_request));
    if (!m_file || (m_file->size() > m_request.length && !m_file->clear())) {
        fail();
        return;
    }
    m_received = m_file->size();
    if (m_received == m_request.length) {
        end(Downloads::End::Complete);
        return;
    }
    m_timeout = m_runLoop.scheduleOnce(m_runLoop.now() + totalTimeout, timeoutTolerance, [this] { fail(); });
    requestRest();
}

void UpdateDownload::cancel()
{
    ++m_generation;
    m_exchange.reset();
    m_retry.invalidate();
    m_timeout.invalidate();
    m_file.reset();
}

void UpdateDownload::discard()
{
    if (const auto file = PartialFile::open(m_folder, fileName(m_request)))
        file->remove();
}

void UpdateDownload::requestRest()
{
    m_highestReceived = std::max(m_highestReceived, m_received);
    m_exchange = m_downloads.get(m_request.address, m_received,
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
    reportProgress();
}

void UpdateDownload::receive(const QByteArray &bytes)
{
    if (bytes.size() > m_request.length - m_received || !m_file->append(bytes)) {
        failWithoutFile();
        return;
    }
    m_received += bytes.size();
    reportProgress();
}

void UpdateDownload::end(Downloads::End end)
{
    m_exchange.reset();
    if (m_received == m_request.length) {
        finish(m_file->read(m_request.length));
    } else if (end == Downloads::End::Refused) {
        fail();
    } else if (end == Downloads::End::OtherRange && !m_file->clear()) {
        failWithoutFile();
    } else {
        m_received = end == Downloads::End::OtherRange ? 0 : m_received;
        retry();
    }
}

void UpdateDownload::retry()
{
    m_failedAttempts = m_received > m_highestReceived ? 0 : m_failedAttempts + 1;
    if (m_failedAttempts == maxFailedAttempts) {
        fail();
        return;
    }
    const Interval delay = firstDelay * (1 << std::max(0, m_failedAttempts - 1));
    m_retry = m_runLoop.scheduleOnce(m_runLoop.now() + delay, delayTolerance, [this] { requestRest(); });
}

void UpdateDownload::reportProgress()
{
    // A copy, because the callback may start another download.
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
        [this, generation = m_generation, archive = std::move(archive)]() mutable {
            if (generation != m_generation)
                return;
            m_onProgress = nullptr;
            const Completion onFinished = std::exchange(m_onFinished, nullptr);
            onFinished(std::move(archive));
        },
        Qt::QueuedConnection);
}
