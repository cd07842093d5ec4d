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
    std::filesystem::remove(report, error);
    if (error) {
        std::filesystem::resize_file(report, 0, error);
        return !error;
    }
    const FileDescriptor folder = openFolder(report.parent_path());
    if (folder.isOpen())
        syncToDisk(folder.get());
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

/// Discards the report of the previous process and returns the request with it, if it may be sent.
std::optional<QByteArray> CrashUpload::takePendingCrash() const
{
    const std::optional<FileText> report = readText(m_places.pendingReport, maxPendingReportSize);
    if (!report || !discard(m_places.pendingReport) || report->text.isEmpty())
        return std::nullopt;
    const QStringList pieces = report->text.split(separator);
    return body(u"crash"_s, pieces.first(), pieces.value(1));
}

void CrashUpload::sendPendingCrash()
{
    if (const std::optional<QByteArray> body = takePendingCrash())
        m_services.http.post(m_endpoint, *body, sendTimeout, *this, [](const std::optional<HttpAnswer> &) {});
}

void CrashUpload::sendEarlyCrash()
{
    const auto lifetime = ReportFile::lifetime(m_places.pendingReport);
    if (!lifetime || *lifetime >= earlyCrash)
        return;
    const std::optional<QByteArray> body = takePendingCrash();
    if (!body)
        return;
    QEventLoop loop;
    m_services.http.post(m_endpoint, *body, sendTimeout, loop,
                         [&loop](const std::optional<HttpAnswer> &) { loop.quit(); });
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
