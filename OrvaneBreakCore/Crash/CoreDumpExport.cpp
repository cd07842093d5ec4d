// SPDX-License-Identifier: GPL-3.0-or-later
#include "CoreDumpExport.h"

#include "SignalStack.h"

#include <QDir>

#include <unistd.h>

#include <chrono>
#include <system_error>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr Interval startDelay = 10s;

FileDate dateOf(const RunLoop &runLoop)
{
    const auto sinceEpoch = runLoop.now().time_since_epoch();
    const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
    const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch - seconds);
    return FileDate::of({seconds.count(), rest.count()});
}

} // namespace

CoreDumpExport::CoreDumpExport(RunLoop &runLoop, CoreDumpQuery query, std::filesystem::path folder)
    : m_runLoop(runLoop)
    , m_query(std::move(query))
    , m_folder(std::move(folder))
{
}

CoreDumpQuery CoreDumpExport::ownCoreDumps()
{
    std::error_code error;
    return {{}, std::filesystem::read_symlink("/proc/self/exe", error), getuid(), {}};
}

void CoreDumpExport::start(const FileDate &lastScan, std::function<void()> onExported)
{
    m_query.after = lastScan;
    m_onExported = std::move(onExported);
    m_start = m_runLoop.scheduleOnce(m_runLoop.now() + startDelay, startDelay, [this] {
        // Taken before the search, so that anything written during it is later.
        const FileDate now = dateOf(m_runLoop);
        try {
            m_thread = std::jthread([this, query = m_query, now](const std::stop_token &stop) {
                const SignalStack signalStack;
                search(query, now, stop);
            });
        } catch (const std::system_error &) {
            // Without a thread there is no search until the next start of the program.
        }
    });
}

void CoreDumpExport::search(const CoreDumpQuery &query, const FileDate &now, const std::stop_token &stop)
{
    bool isNew = false;
    const std::string home = QDir::homePath().toStdString();
    const std::string login = qgetenv("USER").toStdString();
    for (const CoreDump &dump : readCoreDumps(query, stop)) {
        const QString text = coreDumpReport(dump, query.executable, home, login);
        isNew = writeCoreDumpReport(m_folder, dump, text, now) || isNew;
    }
    if (isNew)
        QMetaObject::invokeMethod(this, [this] { m_onExported(); }, Qt::QueuedConnection);
}
