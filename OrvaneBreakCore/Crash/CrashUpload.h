// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDate.h"
#include "SystemVersion.h"

#include <QObject>
#include <QUrl>

#include <filesystem>

class Bundle;
class Http;
class Preferences;

/// Sends crash and error reports to the makers' server. Nothing waits for a report or repeats it, and nobody
/// is told whether it arrived. User-interface thread only.
class CrashUpload final : public QObject
{
    Q_OBJECT

public:
    /// What the upload works with; the references outlive it.
    struct Services
    {
        Http &http;
        Preferences &preferences;
        const Bundle &bundle;
        SystemVersion systemVersion;
        QString serverBase; ///< Scheme and host, for example "https://example.org".
    };

    /// Where reports lie.
    struct Places
    {
        std::filesystem::path pendingReport; ///< What CrashCapture writes.
        std::filesystem::path systemReports; ///< The folder of the reports that the system keeps.

        /// OrvaneBreak/pending-crash.txt in the user's data folder, and OrvaneBreak/Logs/DiagnosticReports in
        /// the one for states.
        [[nodiscard]] static Places standard();
    };

    CrashUpload(Services services, Places places);

    /// The one upload of the process.
    [[nodiscard]] static CrashUpload &shared();

    [[nodiscard]] const Places &places() const { return m_places; }

    /// Sends one report; `kind` is "crash" or "error". The server has 8 seconds.
    void send(const QString &kind, const QString &message, const QString &stack);

    /// Sends the report that the process before has left. It is deleted first, so that it is sent once at
    /// most. Does nothing when there is none, or when it is no UTF-8 text.
    void sendPendingCrash();

    /// The date of the latest report of the system that was sent, kept under "OBLastCrashScan"; the distant
    /// past when there is none.
    [[nodiscard]] FileDate lastScan() const;

    /// Sends the reports of the system that are later than the date kept under "OBLastCrashScan", and keeps
    /// the latest of their dates there. Does nothing when their folder cannot be listed.
    void sendSystemCrashReports();

private:
    Services m_services;
    Places m_places;
    QUrl m_endpoint;
};
