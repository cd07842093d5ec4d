// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "CoreDumps.h"
#include "RunLoop.h"

#include <QObject>

#include <functional>
#include <thread>

/// Turns the core dumps that systemd keeps of this program into reports among the system's, so that crashes
/// which the process itself could not report are sent as well. Does nothing where there is no such service.
class CoreDumpExport final : public QObject
{
    Q_OBJECT

public:
    /// `folder` is where the reports of the system lie.
    CoreDumpExport(RunLoop &runLoop, CoreDumpQuery query, std::filesystem::path folder);

    /// The core dumps of the running program for its user, in the journal of this machine.
    [[nodiscard]] static CoreDumpQuery ownCoreDumps();

    /// Looks for core dumps later than `lastScan`, on a thread of its own and ten seconds from now, when the
    /// program has started. Calls `onExported` on this thread when there are new reports.
    void start(const FileDate &lastScan, std::function<void()> onExported);

private:
    void search(const CoreDumpQuery &query, const FileDate &now, const std::stop_token &stop);

    RunLoop &m_runLoop;
    CoreDumpQuery m_query;
    std::filesystem::path m_folder;
    std::function<void()> m_onExported;
    Timer m_start;
    std::jthread m_thread; ///< The last member: its end is waited for before anything else goes.
};
