// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDate.h"
#include "SystemVersion.h"

#include <QObject>
#include <QUrl>

#include <filesystem>
#include <functional>
#include <optional>

class Bundle;
class Http;
class Preferences;

/// Sends crash and error reports to the makers' server, each at most once. Ignores failures. Only
/// sendEarlyCrash() blocks. User-interface thread only.
class CrashUpload final : public QObject
{
    Q_OBJECT

public:
    /// What the upload uses; the references outlive it.
    struct Services
    {
        Http &http;
        Preferences &preferences;
        const Bundle &bundle;
        SystemVersion systemVersion;
        QString serverBase; ///< Scheme and host, for example "https://example.org".
    };

    /// Where reports are.
    struct Places
    {
        std::filesystem::path pendingReport; ///< The file that CrashCapture writes.
        std::filesystem::path systemReports; ///< The folder of the system's reports.

        /// OrvaneBreak/pending-crash.txt in the user's data folder, and OrvaneBreak/Logs/DiagnosticReports in
        /// the state folder.
        [[nodiscard]] static Places standard();
    };

    CrashUpload(Services services, Places places);

    /// The one upload of the process.
    [[nodiscard]] static CrashUpload &shared();

    [[nodiscard]] const Places &places() const { return m_places; }

    /// Sends one report; `kind` is "crash" or "error". Times out after 8 seconds.
    void send(const QString &kind, const QString &message, const QString &stack);

    /// Sends the previous process's report, or the first mebibyte of it. Moves it out of the way of a crash
    /// of this process, and deletes it when the request is about to leave. If this process ends before, the
    /// next one sends it, deleting it first. What cannot be deleted is emptied. Sends nothing when there is
    /// no report, when it is empty, or when it can neither be deleted nor emptied.
    void sendPendingCrash();

    /// If the previous process crashed within ten seconds of its start, sends its report, and one that it
    /// could not send, deleting them first, and runs the event loop until the exchanges have ended, 8 seconds
    /// at most: if this process crashes as early, nothing else would leave it. Otherwise does nothing. Called
    /// before there is anything that events reach.
    void sendEarlyCrash();

    /// The date of the latest system report that was sent, stored under "OBLastCrashScan"; the distant past
    /// when there is none.
    [[nodiscard]] FileDate lastScan() const;

    /// Sends the system's reports later than lastScan(), and stores the latest of their dates under
    /// "OBLastCrashScan". Does nothing when their folder cannot be listed.
    void sendSystemCrashReports();

private:
    [[nodiscard]] QByteArray body(const QString &kind, const QString &message, const QString &stack) const;
    [[nodiscard]] std::filesystem::path departingReport() const;
    [[nodiscard]] std::optional<QByteArray> readReport(const std::filesystem::path &path) const;
    bool sendWithoutReport(const std::filesystem::path &path, QObject &context,
                           const std::function<void()> &ended);

    Services m_services;
    Places m_places;
    QUrl m_endpoint;
};
