// SPDX-License-Identifier: GPL-3.0-or-later
#include "CrashUpload.h"

#include "Bundle.h"
#include "Http.h"
#include "Preferences.h"
#include "SharedInstance.h"
#include "SystemReports.h"
#include "TextFile.h"
#include "UserFolders.h"

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

/// In bytes; thirty lines take a few kilobytes.
constexpr qint64 maxPendingReportSize = qint64{1024} * 1024;

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

void CrashUpload::send(const QString &kind, const QString &message, const QString &stack)
{
    const QJsonObject body{{u"d"_s, m_services.preferences.text(deviceIdKey).value_or(u"?"_s)},
                           {u"kind"_s, kind},
                           {u"message"_s, message},
                           {u"stack"_s, stack},
                           {u"v"_s, m_services.bundle.shortVersion()},
                           {u"os"_s, m_services.systemVersion.clientText()}};
    m_services.http.post(m_endpoint, QJsonDocument(body).toJson(QJsonDocument::Compact), sendTimeout, *this,
                         [](const std::optional<HttpAnswer> &) {});
}

void CrashUpload::sendPendingCrash()
{
    const std::optional<QString> text = readText(m_places.pendingReport, maxPendingReportSize);
    if (!text)
        return;
    std::error_code ignored;
    std::filesystem::remove(m_places.pendingReport, ignored);
    const QStringList pieces = text->split(separator);
    send(u"crash"_s, pieces.first(), pieces.value(1));
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
