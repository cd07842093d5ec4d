// SPDX-License-Identifier: GPL-3.0-or-later
#include "CrashUpload.h"

#include "Bundle.h"
#include "FileCalls.h"
#include "Http.h"
#include "Preferences.h"
#include "PrivateFolder.h"
#include "ReportFile.h"
#include "SharedInstance.h"
#include "SystemReports.h"
#include "TextFile.h"
#include "UserFolders.h"

#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>

#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString deviceIdKey = u"OBDeviceId"_s;
const QString lastScanKey = u"OBLastCrashScan"_s;
const QString separator = u"\n---\n"_s;

constexpr std::chrono::seconds sendTimeout = 8s;

/// A process that runs longer has sent what the one before it left.
constexpr std::chrono::seconds earlyCrash = 10s;

/// In bytes; thirty lines take a few kilobytes.
constexpr qint64 maxPendingReportSize = qint64{1024} * 1024;

/// Deletes the report, or empties it, so that no later process sends it, not even after a power failure.
bool discard(const std::filesystem::path &report)
{
    std::error_code error;
    const bool isRemoved = std::filesystem::remove(report, error);
    if (error) {
        std::filesystem::resize_file(report, 0, error);
        return !error;
    }
    if (isRemoved) {
        const FileDescriptor folder = openFolder(report.parent_path());
        syncToDisk(folder.get());
    }
    return true;
}

} // namespace

CrashUpload::Places CrashUpload::Places::standard()
{
    return {UserFolders::data() / "OrvaneBreak" / "pending-crash.txt",
            UserFolders::state() / "OrvaneBreak" / "Logs" / "DiagnosticReports"};
}

CrashUpload::CrashUpload(Services services, Places places)
    : m_services(std::move(services))
    , m_places(std::move(places))
    , m_endpoint(m_services.serverBase + u"/api/crash.php"_s, QUrl::StrictMode)
{
}

CrashUpload &CrashUpload::shared()
{
    return SharedInstance<CrashUpload>::get();
}

QByteArray CrashUpload::body(const QString &kind, const QString &message, const QString &stack) const
{
    const QJsonObject body{{u"d"_s, m_services.preferences.text(deviceIdKey).value_or(u"?"_s)},
                           {u"kind"_s, kind},
                           {u"message"_s, message},
                           {u"stack"_s, stack},
                           {u"v"_s, m_services.bundle.shortVersion()},
                           {u"os"_s, m_services.systemVersion.clientText()}};
    return QJsonDocument(body).toJson(QJsonDocument::Compact);
}

void CrashUpload::send(const QString &kind, const QString &message, const QString &stack)
{
    m_services.http.post(m_endpoint, body(kind, message, stack), sendTimeout, *this,
                         [](const std::optional<HttpAnswer> &) {});
}

/// The report whose request has not left yet.
std::filesystem::path CrashUpload::departingReport() const
{
    return m_places.pendingReport.string() + ".sending";
}

/// The request with the report at `path`, which is discarded if it is empty.
std::optional<QByteArray> CrashUpload::readReport(const std::filesystem::path &path) const
{
    const std::optional<FileText> report = readText(path, maxPendingReportSize);
    if (report && report->text.isEmpty())
        discard(path);
    if (!report || report->text.isEmpty())
        return std::nullopt;
    const QStringList pieces = report->text.split(separator);
    return body(u"crash"_s, pieces.first(), pieces.value(1));
}

/// Discards the report at `path` and sends it, if it may be sent. Returns whether it does.
bool CrashUpload::sendWithoutReport(const std::filesystem::path &path, QObject &context,
                                    const std::function<void()> &ended)
{
    const std::optional<QByteArray> body = readReport(path);
    if (!body || !discard(path))
        return false;
    m_services.http.post(m_endpoint, *body, sendTimeout, context,
                         [ended](const std::optional<HttpAnswer> &) { ended(); });
    return true;
}

void CrashUpload::sendPendingCrash()
{
    const std::filesystem::path departing = departingReport();
    sendWithoutReport(departing, *this, [] {});
    std::error_code error;
    std::filesystem::rename(m_places.pendingReport, departing, error);
    if (error) {
        sendWithoutReport(m_places.pendingReport, *this, [] {});
    } else if (const std::optional<QByteArray> body = readReport(departing)) {
        m_services.http.post(
            m_endpoint, *body, sendTimeout, *this,
            [departing](const std::optional<HttpAnswer> &) { discard(departing); },
            [departing] { return discard(departing); });
    }
}

void CrashUpload::sendEarlyCrash()
{
    const auto lifetime = ReportFile::lifetime(m_places.pendingReport);
    if (!lifetime || *lifetime >= earlyCrash)
        return;
    QEventLoop loop;
    int open = 0;
    for (const std::filesystem::path &path : {departingReport(), m_places.pendingReport})
        open += sendWithoutReport(path, loop, [&] {
            if (--open == 0)
                loop.quit();
        });
    if (open > 0)
        loop.exec();
}

FileDate CrashUpload::lastScan() const
{
    const QString stored = m_services.preferences.text(lastScanKey).value_or(QString());
    return FileDate::parse(stored).value_or(FileDate::distantPast());
}

void CrashUpload::sendSystemCrashReports()
{
    const std::optional<SystemReports> found = readSystemReports(m_places.systemReports, lastScan());
    if (!found)
        return;
    for (const SystemReport &report : found->reports)
        send(u"crash"_s, report.message, report.stack);
    m_services.preferences.setValue(lastScanKey, found->newest.text());
}
