// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakEngine.h"
#include "CoreDumps.h"
#include "CrashUpload.h"
#include "NetworkDownloads.h"
#include "NetworkHttp.h"
#include "PrivacyStatement.h"
#include "RecordedDay.h"
#include "Support/FeedMaker.h"
#include "Support/MessagesFixture.h"
#include "Support/ScriptedServer.h"
#include "Support/TestProgram.h"

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QPlainTextEdit>

#include <filesystem>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Members = PrivacyStatement::Members;
using Names = PrivacyStatement::Names;

const QString login = u"anna-maria"_s;
const QString home = u"/home/"_s + login;

/// The sorted names, so that failures are readable.
QString text(const Names &names)
{
    QStringList sorted = names.values();
    sorted.sort();
    return sorted.join(u' ');
}

QStringList lines(const QMap<QString, Members> &requests)
{
    QStringList result;
    for (auto it = requests.begin(); it != requests.end(); ++it)
        result << it.key() + u": "_s + text(it->always) + u"; "_s + text(it->sometimes);
    return result;
}

/// Leaves a crash report of the previous process and one in systemd's journal, and sends both.
void reportCrashes(RecordedDay &day)
{
    const QTemporaryDir folder;
    const std::filesystem::path root = folder.path().toStdString();
    QFile pending(folder.filePath(u"pending-crash.txt"_s));
    if (!pending.open(QIODevice::WriteOnly) || pending.write("SIGSEGV\n---\n0 orvanebreak 0x12 main") < 0)
        qFatal("no scratch file");
    pending.close();
    const CoreDump dump{{1, 0},
                        11,
                        u"SIGSEGV"_s,
                        u"Process 12 (orvanebreak) of user 1000 dumped core, "_s + home + u"/bin, "_s +
                            login};
    const std::string program = home.toStdString() + "/bin/orvanebreak";
    writeCoreDumpReport(root / "reports", dump,
                        coreDumpReport(dump, program, home.toStdString(), login.toStdString()), {2, 0});
    CrashUpload upload({day.http, day.preferences, day.bundle, {6, 1, 0}, RecordedDay::server},
                       {root / "pending-crash.txt", root / "reports"});
    upload.sendPendingCrash();
    upload.sendSystemCrashReports();
    if (day.http.requests.size() != 2)
        qFatal("two reports were to be sent");
    day.settle();
}

void writeToTheMakers(RecordedDay &day)
{
    day.delegate.showMessages();
    Launched::inMessages<QPlainTextEdit>(u"replyField"_s)->setPlainText(u"Merci"_s);
    Launched::inMessages<QPushButton>(u"sendButton"_s)->click();
    day.settle();
    day.delegate.reportProblemPressed();
    Launched::dialog()->findChild<QPlainTextEdit *>()->setPlainText(u"Ça ne va pas"_s);
    Launched::dialog()->findChild<QLineEdit *>()->setText(u"moi@exemple.ch"_s);
    day.confirm();
    day.confirm();
}

/// Everything that a user can do and everything that happens on its own.
void liveADay(RecordedDay &day)
{
    reportCrashes(day);
    day.hasMessage = true;
    day.launch();
    day.settle();
    day.confirm();
    day.engine.start();
    day.pass(6h);
    day.engine.postpone(10);
    writeToTheMakers(day);
    day.pass(6h);
    day.click(u"updatesButton"_s);
    day.confirm();
    day.click(u"websiteLink"_s);
    day.delegate.breakNowPressed();
    day.pass(6h);
    day.item = FeedMaker::item("<s:version>1.1</s:version>" + FeedMaker::enclosure())
                   .replace("example.org/OrvaneBreak-1.3", "makers.invalid/OrvaneBreak-1.1");
    day.pass(6h);
    day.delegate.applicationWillTerminate();
    day.settle();
}

QString placeholders(QString request)
{
    return request.replace(u"VERSION"_s, u"1.1"_s).replace(u"ARCHITECTURE"_s, u"x86_64"_s);
}

/// The names of the headers in `request`.
Names headersOf(const QByteArray &request)
{
    Names names;
    const QList<QByteArray> head = request.left(request.indexOf("\r\n\r\n")).split('\n');
    for (const QByteArray &line : head.mid(1))
        names.insert(QString::fromLatin1(line.left(line.indexOf(':'))));
    return names;
}

} // namespace

/// Compares the privacy statement with what the program sends.
class PrivacyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data()
    {
        QTest::addColumn<QString>("document");
        QTest::newRow("english") << u"privacy.md"_s;
        QTest::newRow("french") << u"confidentialite.fr.md"_s;
    }

    void initTestCase() { QApplication::setWindowIcon(QPixmap(64, 64)); }

    void cleanup() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    void namesEveryRequestOfADayAndNoOther()
    {
        RecordedDay day({{u"SUEnableAutomaticChecks"_s, true}, {u"SUAutomaticallyUpdate"_s, true}});
        liveADay(day);
        QMap<QString, Members> promised;
        const PrivacyStatement stated = statement();
        for (auto it = stated.requests.begin(); it != stated.requests.end(); ++it)
            promised.insert(placeholders(it.key()), *it);
        QCOMPARE(lines(day.requests()), lines(promised));
    }

    void explainsEveryMemberAndNoOther()
    {
        const PrivacyStatement stated = statement();
        Names named;
        for (const Members &members : stated.requests)
            named.unite(members.always).unite(members.sometimes);
        QCOMPARE(text(stated.members), text(named));
        QVERIFY(!named.isEmpty());
    }

    void sendsRequestsAsOftenAsStated()
    {
        RecordedDay day({{u"SUEnableAutomaticChecks"_s, true}});
        day.launch();
        day.pass(23h + 30min);
        QCOMPARE(day.seen.value(u"POST /api/check.php"_s).count, 24);
        QCOMPARE(day.seen.value(u"GET /appcast.xml"_s).count, 24);
    }

    void asksForNoUpdateWithoutConsent()
    {
        RecordedDay day;
        day.launch();
        day.pass(24h);
        QCOMPARE(day.seen.keys(), QStringList(u"POST /api/check.php"_s));
    }

    void sendsNoPersonalData()
    {
        RecordedDay day;
        liveADay(day);
        for (const QString &secret : {login, QDir::homePath()})
            QVERIFY2(!day.bodies.contains(secret.toUtf8()), qPrintable(secret));
        QVERIFY(day.bodies.contains("~/bin"));
    }

    void namesEveryHeaderAndNoOther()
    {
        QObject context;
        ScriptedServer posted;
        NetworkHttp http;
        http.post(posted.url(), "{}", 20s, context, [](const std::optional<HttpAnswer> &) {});
        QTRY_VERIFY(posted.isWhole());
        ScriptedServer asked;
        http.get(asked.url(), 20s, context, [](const std::optional<HttpAnswer> &) {});
        QTRY_VERIFY(asked.isWhole());
        ScriptedServer continued;
        NetworkDownloads downloads;
        const auto exchange = downloads.get(
            continued.url(), 7, {[](qint64) {}, [](const QByteArray &) {}, [](Downloads::End) {}});
        QTRY_VERIFY(continued.isWhole());
        Names sent;
        for (const ScriptedServer *asker : {&posted, &asked, &continued}) {
            sent.unite(headersOf(asker->received));
            QVERIFY2(asker->received.contains("\r\nAccept: */*\r\n"), asker->received.constData());
        }
        QCOMPARE(text(sent), text(statement().headers));
    }

private:
    static PrivacyStatement statement()
    {
        QFETCH_GLOBAL(QString, document);
        return PrivacyStatement::read(QStringLiteral(ORVANE_DOCUMENTS) + u'/' + document);
    }
};

ORVANE_TEST(PrivacyTest, QApplication)
#include "PrivacyTest.moc"
