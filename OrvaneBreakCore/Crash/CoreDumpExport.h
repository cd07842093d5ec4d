// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "CoreDumps.h"
#include "RunLoop.h"

#include <QObject>

#include <functional>
#include <thread>

/// Converts the core dumps that systemd keeps of this program into system reports, so that crashes which the
/// process itself could not report are sent as well. Does nothing without systemd's journal.
class CoreDumpExport final : public QObject
{
    Q_OBJECT

public:
    /// `folder` is the folder of the system's reports.
    CoreDumpExport(RunLoop &runLoop, CoreDumpQuery query, std::filesystem::path folder);

    /// The core dumps of the running program for its user, in the journal of this machine.
    [[nodiscard]] static CoreDumpQuery ownCoreDumps();

    /// Searches for core dumps later than `lastScan` ten seconds from now, after startup, on its own thread.
    /// Calls `onExported` on the calling thread when there are new reports.
    void start(const FileDate &lastScan, std::function<void()> onExported);

private:
    void search(const CoreDumpQuery &query, const FileDate &now, const std::stop_token &stop);

    RunLoop &m_runLoop;
    CoreDumpQuery m_query;
    std::filesystem::path m_folder;
    std::function<void()> m_onExported;
    Timer m_start;
    std::jthread m_thread; ///< Last, so that it is joined before the other members are destroyed.
};
