// SPDX-License-Identifier: GPL-3.0-or-later
#include "RecordedDay.h"

#include "Support/FeedMaker.h"
#include "Support/MessagesFixture.h"

#include <QDesktopServices>

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QString path(const QUrl &url)
{
    const QString address = url.toString();
    return address.startsWith(RecordedDay::server + u'/') ? address.mid(RecordedDay::server.size()) : address;
}

} // namespace

void RecordedDay::Seen::note(const PrivacyStatement::Names &members)
{
    always = count == 0 ? members : always.intersect(members);
    atAll.unite(members);
    ++count;
}

RecordedDay::RecordedDay(const QJsonObject &updates)
    : ApplicationFixture({QUrl(server + u"/appcast.xml"_s), Ed25519::PublicKey{1}, UpdateVersion(u"1.0"_s),
                          u"x86_64"_s, UpdateVersion(u"6.1"_s)},
                         updates)
{
    QDesktopServices::setUrlHandler(u"https"_s, this, "opened");
}

RecordedDay::~RecordedDay()
{
    QDesktopServices::unsetUrlHandler(u"https"_s);
}

void RecordedDay::pass(Interval interval)
{
    for (Interval done = 0s; done < interval; done += 1min) {
        runLoop.advance(1min);
        settle();
    }
}

void RecordedDay::settle()
{
    while (!http.requests.isEmpty()) {
        const FakeHttp::Request request = http.requests.constFirst();
        const QString method = request.method == FakeHttp::Method::Get ? u"GET "_s : u"POST "_s;
        const QStringList members = request.json().keys();
        bodies += request.body;
        note(method + path(request.url), {members.begin(), members.end()});
        http.answer(HttpAnswer{200, answerTo(request)});
        QCoreApplication::processEvents();
    }
    for (; m_downloads < downloads.requests.size(); ++m_downloads)
        note(u"GET "_s + path(downloads.requests.at(m_downloads).url), {});
}

void RecordedDay::click(const QString &button)
{
    find<QPushButton>(button)->click();
    settle();
}

void RecordedDay::confirm()
{
    Launched::press(u"alertDefault"_s);
    settle();
}

QMap<QString, PrivacyStatement::Members> RecordedDay::requests() const
{
    QMap<QString, PrivacyStatement::Members> result;
    for (auto it = seen.begin(); it != seen.end(); ++it)
        result.insert(it.key(), {it->always, it->atAll - it->always});
    return result;
}

void RecordedDay::opened(const QUrl &url)
{
    const bool isTheirSite = url.toString() == find<QWidget>(u"websiteLink"_s)->accessibleDescription();
    note(isTheirSite ? u"GET /"_s : url.toString(), {});
}

void RecordedDay::note(const QString &request, const PrivacyStatement::Names &members)
{
    seen[request].note(members);
}

QByteArray RecordedDay::answerTo(const FakeHttp::Request &request)
{
    if (request.method == FakeHttp::Method::Get)
        return FeedMaker::feed(item);
    if (!request.url.path().endsWith("check.php"_L1))
        return R"({"ok":true})";
    const QString nonce = request.json()[u"n"_s].toString();
    const QString message = std::exchange(hasMessage, false) ? u"Bonjour"_s : QString();
    return jsonBytes(makers.answer(nonce, unixSeconds(runLoop.now()), 7, message));
}
