// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/FeedMaker.h"
#include "Support/TestProgram.h"

#include <QElapsedTimer>
#include <QTimeZone>

using namespace Qt::StringLiterals;
using namespace FeedMaker;
using namespace std::chrono_literals;

class AppcastTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void allPropertiesOfAnItem()
    {
        const Appcast result = parsed(
            feed("<title>Feed</title><o:serial xmlns:o='urn:orvanebreak:feed'> 12 </o:serial>"
                 "<o:expires xmlns:o='urn:orvanebreak:feed'>Tue, 03 Mar 2026 10:00:00 GMT</o:expires>" +
                 item("<title>OrvaneBreak 1.3</title><pubDate>Sun, 01 Mar 2026 08:30:00 +0200</pubDate>"
                      "<s:version>1.3.0</s:version><s:shortVersionString>1.3</s:shortVersionString>"
                      "<s:minimumSystemVersion>2.28</s:minimumSystemVersion><s:criticalUpdate/>"
                      "<s:maximumSystemVersion>2.99</s:maximumSystemVersion>"
                      "<s:phasedRolloutInterval>3600</s:phasedRolloutInterval>"
                      "<description><![CDATA[- a <b>bold</b> & new thing]]></description>"
                      "<unknown><s:version>9</s:version></unknown>" +
                      enclosure("s:arch='aarch64'"))));
        QCOMPARE(result.serial, 12);
        QVERIFY(!result.newestUnusable.isValid());
        QCOMPARE(result.expires, QDateTime(QDate(2026, 3, 3), QTime(10, 0), QTimeZone::utc()));
        QCOMPARE(result.items.size(), 1U);
        const AppcastItem &found = result.items.front();
        QCOMPARE(found.version.text(), u"1.3.0"_s);
        QCOMPARE(found.displayVersion, u"1.3"_s);
        QCOMPARE(found.date, QDateTime(QDate(2026, 3, 1), QTime(6, 30), QTimeZone::utc()));
        QCOMPARE(found.minimumSystemVersion.text(), u"2.28"_s);
        QCOMPARE(found.maximumSystemVersion.text(), u"2.99"_s);
        QCOMPARE(found.rolloutInterval, 1h);
        QVERIFY(found.isCritical && !found.isRestricted);
        QCOMPARE(found.releaseNotes, u"- a <b>bold</b> & new thing"_s);
        QCOMPARE(found.operatingSystem, u"linux"_s);
        QCOMPARE(found.architecture, u"aarch64"_s);
        QCOMPARE(found.archive, QUrl(u"https://example.org/OrvaneBreak-1.3-linux-x86_64.tar.zst"_s));
        QCOMPARE(found.length, 1000);
        QCOMPARE(found.signature, QByteArray(64, 's'));
    }

    static void optionalProperties()
    {
        const Appcast result = parsed(feed(wholeItem("1.3")));
        QVERIFY(result.serial == 0 && !result.expires.isValid());
        QCOMPARE(result.items.size(), 1U);
        const AppcastItem &found = result.items.front();
        QCOMPARE(found.displayVersion, u"1.3"_s);
        QCOMPARE(found.architecture, u"x86_64"_s);
        QVERIFY(!found.date.isValid() && !found.minimumSystemVersion.isValid());
        QVERIFY(!found.isCritical && !found.isRestricted && found.rolloutInterval == 0s);
        QVERIFY(found.releaseNotes.isEmpty());
    }

    static void attributesOfTheEnclosureTakePrecedence()
    {
        const Appcast result = parsed(feed(item(
            "<s:version>1</s:version><s:shortVersionString>one</s:shortVersionString><s:os>macos</s:os>" +
            enclosure("s:version='2' s:shortVersionString='two'"))));
        QCOMPARE(result.items.size(), 1U);
        QCOMPARE(result.items.front().version.text(), u"2"_s);
        QCOMPARE(result.items.front().displayVersion, u"two"_s);
        QCOMPARE(result.items.front().operatingSystem, u"linux"_s);
    }

    static void severalItemsAndEnclosures()
    {
        const Appcast result =
            parsed(feed(item("<s:version>3</s:version>" + enclosure("s:arch='a'") + enclosure("s:arch='b'")) +
                        wholeItem("2") + wholeItem("4")));
        QStringList found;
        for (const AppcastItem &item : result.items)
            found << item.version.text() + item.architecture;
        QCOMPARE(found, (QStringList{u"3a"_s, u"3b"_s, u"2x86_64"_s, u"4x86_64"_s}));
    }

    static void anInvalidItemIsLeftOut_data()
    {
        QTest::addColumn<QByteArray>("bad");
        const QByteArray version = "<s:version>1.4</s:version>";
        const auto changed = [&](const QByteArray &from, const QByteArray &to) {
            return item(version + enclosure().replace(from, to));
        };
        QTest::newRow("no version") << item(enclosure());
        QTest::newRow("no such version") << item("<s:version>latest</s:version>" + enclosure());
        QTest::newRow("version of no namespace") << item("<version>1.4</version>" + enclosure());
        QTest::newRow("version of another namespace")
            << item("<o:version xmlns:o='urn:other'>1.4</o:version>" + enclosure());
        QTest::newRow("no enclosure") << item(version);
        QTest::newRow("no address") << changed("url=", "uri=");
        QTest::newRow("http") << changed("https://", "http://");
        QTest::newRow("file") << changed("https://example.org", "file:///tmp");
        QTest::newRow("with a password") << changed("https://", "https://me:secret@");
        QTest::newRow("relative") << changed("https://example.org/", "");
        QTest::newRow("no length") << changed("length=", "size=");
        QTest::newRow("negative length") << changed("1000", "-1000");
        QTest::newRow("zero length") << changed("1000", "0");
        QTest::newRow("odd length") << changed("1000", "1e3");
        QTest::newRow("length over a gibibyte") << changed("1000", "1073741825");
        QTest::newRow("length over 64 bits") << changed("1000", "18446744073709551617");
        QTest::newRow("no signature") << changed("edSignature", "dsaSignature");
        QTest::newRow("empty signature") << changed(signature(), "");
        QTest::newRow("no base64") << changed(signature(), "?" + signature().sliced(1));
        QTest::newRow("63 bytes") << changed(signature(), signature(63));
        QTest::newRow("65 bytes") << changed(signature(), signature(65));
    }

    static void anInvalidItemIsLeftOut()
    {
        QFETCH(const QByteArray, bad);
        const Appcast result = parsed(feed(wholeItem("1.1") + bad + wholeItem("1.2")));
        QCOMPARE(result.items.size(), 2U);
        QCOMPARE(result.items.at(0).version.text(), u"1.1"_s);
        QCOMPARE(result.items.at(1).version.text(), u"1.2"_s);
        QVERIFY(!result.newestUnusable.isValid() || result.newestUnusable.text() == u"1.4"_s);
    }

    static void theNewestUnusableVersionIsKnown()
    {
        const auto unusable = [](const QByteArray &version) {
            return wholeItem(version).replace("https://", "ftp://");
        };
        const Appcast result =
            parsed(feed(unusable("1.4") + unusable("1.10") + unusable("1.9") + wholeItem("2")));
        QCOMPARE(result.items.size(), 1U);
        QCOMPARE(result.newestUnusable.text(), u"1.10"_s);
    }

    static void anItemWithAConditionOfItsOwnIsRestricted_data()
    {
        QTest::addColumn<QByteArray>("condition");
        QTest::newRow("invalid minimum")
            << QByteArray("<s:minimumSystemVersion>new</s:minimumSystemVersion>");
        QTest::newRow("invalid maximum") << QByteArray("<s:maximumSystemVersion>x</s:maximumSystemVersion>");
        QTest::newRow("channel") << QByteArray("<s:channel>beta</s:channel>");
        QTest::newRow("hardware") << QByteArray("<s:hardwareRequirements>arm64</s:hardwareRequirements>");
        QTest::newRow("by hand") << QByteArray(
            "<s:minimumAutoupdateVersion>1.0</s:minimumAutoupdateVersion>");
        QTest::newRow("interval") << QByteArray("<s:phasedRolloutInterval>day</s:phasedRolloutInterval>");
        QTest::newRow("past") << QByteArray("<s:phasedRolloutInterval>-1</s:phasedRolloutInterval>");
    }

    static void anItemWithAConditionOfItsOwnIsRestricted()
    {
        QFETCH(const QByteArray, condition);
        const Appcast result =
            parsed(feed(item("<s:version>1.4</s:version>" + condition + enclosure()) + wholeItem()));
        QCOMPARE(result.items.size(), 2U);
        QVERIFY(result.items.front().isRestricted && !result.items.back().isRestricted);
    }

    static void linkedNotesAreShownAsALink()
    {
        const auto notes = [](const QByteArray &more) {
            return parsed(feed(item("<s:version>1</s:version>" + more + enclosure())))
                .items.front()
                .releaseNotes;
        };
        const QByteArray link = "<s:releaseNotesLink>https://example.org/notes</s:releaseNotesLink>";
        QCOMPARE(notes(link), u"https://example.org/notes"_s);
        QCOMPARE(notes(link + "<description>Plus calme</description>"), u"Plus calme"_s);
        QCOMPARE(notes("<s:releaseNotesLink>file:///etc/passwd</s:releaseNotesLink>"), QString());
    }

    static void readingEnds()
    {
        const QByteArray whole = feed(wholeItem());
        QVERIFY(parseAppcast(whole, &Http::isAllowed));
        QVERIFY(!parseAppcast(whole, &Http::isAllowed, {{}, 0ms}));
        std::stop_source source;
        source.request_stop();
        QVERIFY(!parseAppcast(whole, &Http::isAllowed, {source.get_token()}));
    }

    static void manyAttributesCostNoTime_data()
    {
        QTest::addColumn<QByteArray>("content");
        QByteArray attributes;
        for (int number = 0; attributes.size() < 900'000; ++number)
            attributes += " a" + QByteArray::number(number) + "=''";
        QTest::newRow("one tag") << QByteArray("<x" + attributes + "/>");
        QTest::newRow("behind a comment") << QByteArray("<!-- '<x --><x b='>'" + attributes + "/>");
        QTest::newRow("behind unparsed text") << QByteArray("<![CDATA[ \"]]><x" + attributes + "/>");
    }

    static void manyAttributesCostNoTime()
    {
        QFETCH(const QByteArray, content);
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!parseAppcast(feed(content + wholeItem()), &Http::isAllowed));
        QVERIFY2(timer.elapsed() < 2'000, qPrintable(QString::number(timer.elapsed())));
    }

    static void httpIsAllowedOnLoopback()
    {
        const QByteArray local = wholeItem().replace("https://example.org", "http://127.0.0.1:8000");
        QCOMPARE(parsed(feed(local)).items.size(), 1U);
        const auto overHttpsAlone = [](const QUrl &url) { return url.scheme() == "https"_L1; };
        const auto result = parseAppcast(feed(local + wholeItem("2")), overHttpsAlone);
        QCOMPARE(result.value_or(Appcast()).items.size(), 1U);
    }

    static void longTextsAreTruncated()
    {
        const QByteArray eye = "\xf0\x9f\x91\x81";
        const Appcast result = parsed(feed(
            item("<s:shortVersionString>" + QByteArray(1'000, 't') + "</s:shortVersionString><description>x" +
                 eye.repeated(20'000) + "</description><s:version>1</s:version>" + enclosure())));
        QCOMPARE(result.items.size(), 1U);
        QCOMPARE(result.items.front().displayVersion.size(), 200);
        QCOMPARE(result.items.front().releaseNotes.size(), 19'999);
        QVERIFY(result.items.front().releaseNotes.endsWith(QString::fromUtf8(eye)));
    }

    static void invalidFeeds_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray entities =
            "<!DOCTYPE rss [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'>]>";
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no markup") << QByteArray("Not found");
        QTest::newRow("cut off") << feed(wholeItem()).chopped(3);
        QTest::newRow("more after the end") << feed(wholeItem()) + "<rss/>";
        QTest::newRow("no UTF-8") << feed("<title>\xff\xfe</title>");
        QTest::newRow("web page") << QByteArray("<html><body/></html>");
        QTest::newRow("document type") << feed(wholeItem(), "<!DOCTYPE rss>");
        QTest::newRow("entities") << feed("<title>&b;</title>", entities);
        QTest::newRow("outer entity")
            << feed("<title>&x;</title>", "<!DOCTYPE rss [<!ENTITY x SYSTEM 'file:///etc/passwd'>]>");
        QTest::newRow("undeclared entity") << feed("<title>&x;</title>");
        QTest::newRow("depth") << feed(QByteArray("<x>").repeated(31) + QByteArray("</x>").repeated(31));
        QTest::newRow("size") << feed("<!--" + QByteArray(1'048'576, 'x') + "-->");
        QTest::newRow("attributes") << feed("<x" + QByteArray(" a='b'").repeated(65) + "/>");
        QTest::newRow("enclosures") << feed(item(QByteArray("<enclosure/>").repeated(33)));
        QTest::newRow("count") << feed(QByteArray("<item/>").repeated(1'001));
    }

    static void invalidFeeds()
    {
        QFETCH(const QByteArray, bytes);
        QVERIFY(!parseAppcast(bytes, &Http::isAllowed));
    }

    static void feedsAtTheLimits()
    {
        const QByteArray deep = QByteArray("<x>").repeated(30) + QByteArray("</x>").repeated(30);
        const QByteArray many = QByteArray("<item/>").repeated(999);
        const QByteArray content = deep + many + wholeItem();
        const qsizetype rest = 1'048'576 - feed(content).size() - 7;
        const QByteArray whole = feed(content + "<!--" + QByteArray(rest, 'x') + "-->");
        QCOMPARE(whole.size(), 1'048'576);
        QCOMPARE(parsed(whole).items.size(), 1U);
    }
};

ORVANE_TEST(AppcastTest, TestProgram::NoApplication)
#include "AppcastTest.moc"
