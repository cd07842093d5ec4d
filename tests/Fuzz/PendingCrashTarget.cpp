// SPDX-License-Identifier: GPL-3.0-or-later
#include "Bundle.h"
#include "CrashUpload.h"
#include "Support/FakeHttp.h"
#include "Support/MemoryPreferences.h"
#include "Support/ScratchFolder.h"
#include "Target.h"

using namespace Qt::StringLiterals;

namespace {

/// The expected request for a report with this text.
QByteArray expectedBody(const QString &text)
{
    const QString separator = u"\n---\n"_s;
    const qsizetype messageEnd = text.indexOf(separator);
    const qsizetype stackBegin = messageEnd + separator.size();
    const qsizetype stackEnd = text.indexOf(separator, stackBegin);
    const QJsonObject body{
        {u"d"_s, u"?"_s},
        {u"kind"_s, u"crash"_s},
        {u"message"_s, text.left(messageEnd)},
        {u"stack"_s,
         messageEnd < 0 ? QString() : text.mid(stackBegin, stackEnd < 0 ? -1 : stackEnd - stackBegin)},
        {u"v"_s, u"?"_s},
        {u"os"_s, u"macOS 0.0"_s}};
    return QJsonDocument(body).toJson(QJsonDocument::Compact);
}

} // namespace

/// The input is the report of the previous process.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const ScratchFolder folder;
    const QByteArray bytes = fuzzInput(data, size);
    const CrashUpload::Places places{folder.path("pending-crash.txt"), folder.path("reports")};
    ScratchFolder::writeTo(places.pendingReport, bytes);
    FakeHttp http;
    MemoryPreferences preferences;
    const Bundle bundle(u"/nonexistent"_s);
    CrashUpload upload({http, preferences, bundle, {}, u"https://makers.invalid"_s}, places);

    upload.sendPendingCrash();
    const bool isText = !bytes.isEmpty();
    acceptedInputs += isText ? 1 : 0;
    require(http.requests.size() == (isText ? 1 : 0), "any text is sent");
    require(!std::filesystem::exists(places.pendingReport), "a report is removed");
    require(!isText || http.requests.constFirst().body == expectedBody(everyCharacter(bytes)),
            "message and stack are those of the report");
    upload.sendPendingCrash();
    require(http.requests.size() == (isText ? 1 : 0), "it is sent once");
    return 0;
}
