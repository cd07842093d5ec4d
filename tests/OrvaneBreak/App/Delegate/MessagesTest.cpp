// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/MessagesFixture.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"
#include "TextView.h"

#include <QApplication>
#include <QJsonArray>
#include <QPlainTextEdit>
#include <QScreen>
#include <QScrollArea>
#include <QWheelEvent>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Milliseconds after which a dialog that comes by itself takes keys.
constexpr int afterEarlyKeys = 1100;

} // namespace

/// Messages from the makers and replies, with the real windows and without a network.
class MessagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setWindowIcon(QPixmap(64, 64)); }

    void init() { failOnUnexpectedWarnings(); }

    void cleanup() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    void checksInAtLaunchAndEveryHour()
    {
        Launched f;
        QCOMPARE(f.http.requests.size(), 1);
        QCOMPARE(f.http.requests.constFirst().url.path(), u"/api/check.php"_s);
        f.runLoop.advance(59min);
        QCOMPARE(f.http.requests.size(), 1);
        f.runLoop.advance(2min);
        QCOMPARE(f.http.requests.size(), 2);
        f.runLoop.advance(24h);
        QCOMPARE(f.http.requests.size(), 26);
    }

    void aMessageIsShownAndThenAcknowledged()
    {
        Launched f;
        QVERIFY(!f.hasBadges());
        f.deliver(7, u"Bonjour"_s);
        QCOMPARE(f.dialogText(), u"Message de Orvane Labs / Bonjour"_s);
        QCOMPARE(f.dialog()->findChild<QPushButton *>()->text(), u"Compris"_s);
        QVERIFY(f.hasBadges());
        f.press(u"alertDefault"_s);
        QVERIFY(!f.dialog());
        QVERIFY(!f.hasBadges());
        QCOMPARE(f.preferences.integer(u"OBAckMessage"_s), std::optional<qint64>(7));
        f.runLoop.advance(61min);
        f.deliver(7, u"Bonjour"_s);
        QVERIFY(!f.dialog());
    }

    void escapeAcknowledgesAMessage()
    {
        Launched f;
        f.deliver(7, u"Bonjour"_s);
        QTest::qWait(afterEarlyKeys);
        QTest::keyClick(f.dialog(), Qt::Key_Escape);
        QVERIFY(f.channel.messageHistory().size() == 1);
    }

    void aMessageIsNotAnsweredByWhatIsBeingTyped()
    {
        Launched f;
        f.deliver(7, u"Bonjour"_s);
        const auto type = [&f](QTest::KeyAction action, bool isRepeat = false) {
            const QEvent::Type eventType = action == QTest::Press ? QEvent::KeyPress : QEvent::KeyRelease;
            QKeyEvent event(eventType, Qt::Key_Space, {}, u" "_s, isRepeat);
            QCoreApplication::sendEvent(f.dialog()->findChild<QPushButton *>(), &event);
        };
        type(QTest::Press);
        QTest::qWait(afterEarlyKeys);
        type(QTest::Press, true);
        type(QTest::Release);
        QVERIFY(f.dialog());
        type(QTest::Press);
        type(QTest::Release);
        QVERIFY(!f.dialog());
    }

    void aMinimisedWindowIsNotVisible()
    {
        Launched f;
        f.window()->showMinimized();
        f.deliver(7, u"Bonjour"_s);
        QVERIFY(!f.dialog());
        QVERIFY(f.hasBadges());
    }

    void aMessageWaitsForTheEndOfAForm()
    {
        Launched f;
        f.delegate.reportProblemPressed();
        f.deliver(7, u"Bonjour"_s);
        QVERIFY(f.dialogText().startsWith(u"Signaler"_s));
        f.press(u"alertCancel"_s);
        QCOMPARE(f.dialogText(), u"Message de Orvane Labs / Bonjour"_s);
    }

    void duringABreakAMessageWaitsForTheNextCheckIn()
    {
        Launched f;
        f.engine.breakNow();
        f.deliver(7, u"Bonjour"_s);
        QVERIFY(!f.dialog());
        QVERIFY(f.hasBadges());
        f.runLoop.advance(21s);
        QVERIFY(!f.engine.isOnBreak());
        QVERIFY(!f.dialog());
        f.runLoop.advance(61min);
        f.http.answer(std::nullopt);
        QCOMPARE(f.dialogText(), u"Message de Orvane Labs / Bonjour"_s);
        f.press(u"alertDefault"_s);
    }

    void withTheWindowHiddenOnlyTheBadgesAreShown()
    {
        Launched f(true);
        QVERIFY(!f.tray.menu->findChild<QAction *>(u"messages"_s));
        f.deliver(7, u"Bonjour"_s);
        QVERIFY(!f.dialog());
        QVERIFY(f.hasBadges());
        QAction *entry = f.tray.menu->findChild<QAction *>(u"messages"_s);
        QVERIFY(entry);
        QCOMPARE(entry->text(), u"Message de Orvane Labs"_s);
        QVERIFY(!entry->icon().isNull());
        entry->trigger();
        QVERIFY(f.window(u"messagesWindow"_s)->isVisible());
        QCOMPARE(f.bodies(), QStringList{u"Bonjour"_s});
        QVERIFY(!f.hasBadges());
        QVERIFY(!f.tray.menu->findChild<QAction *>(u"messages"_s));
    }

    void aSecondMessageDuringTheAlertIsNotLost()
    {
        Launched f;
        f.deliver(7, u"Bonjour"_s);
        f.runLoop.advance(61min);
        f.deliver(8, u"Bonsoir"_s);
        QCOMPARE(f.dialogText(), u"Message de Orvane Labs / Bonjour"_s);
        f.press(u"alertDefault"_s);
        QCOMPARE(f.channel.pendingMessage()->id, 8);
        QVERIFY(f.hasBadges());
    }

    void aMessageReadWhileItsAlertIsOpenIsAcknowledgedOnce()
    {
        Launched f(true);
        f.delegate.showMainWindow();
        f.deliver(7, u"Bonjour"_s);
        f.tray.choose(u"Message de Orvane Labs"_s);
        f.runLoop.advance(1h);
        f.deliver(8, u"Bonsoir"_s);
        f.tray.choose(u"Message de Orvane Labs"_s);
        QCOMPARE(f.dialogText(), u"Message de Orvane Labs / Bonjour"_s);
        f.press(u"alertDefault"_s);
        f.runLoop.advance(1h);
        QCOMPARE(f.http.requests.constFirst().json()[u"m"_s], QJsonValue(8));
        QCOMPARE(f.preferences.stored[u"OBShownMessages"_s], QJsonValue(QJsonArray{7, 8}));
    }

    void theEmptyWindow()
    {
        Launched f;
        f.delegate.showMessages();
        const auto *label = f.inMessages<QLabel>(u"emptyLabel"_s);
        QCOMPARE(label->text(),
                 u"Aucun message pour l'instant.\nLes réponses de Orvane Labs apparaîtront ici."_s);
        QCOMPARE(label->y(), 60);
        QVERIFY(std::abs(label->geometry().center().x() - 229.5) <= 1);
        QCOMPARE(f.inMessages<QWidget>(u"conversation"_s)->size(), QSize(460, 416));
        QVERIFY(f.bodies().isEmpty());
    }

    void theFramesOfTheWindow()
    {
        Launched f;
        f.delegate.showMessages();
        const QWidget *window = f.window(u"messagesWindow"_s);
        QCOMPARE(window->windowTitle(), u"Messages de Orvane Labs"_s);
        QCOMPARE(window->size(), QSize(460, 520));
        QCOMPARE(window->pos(), window->screen()->availableGeometry().center() - window->rect().center());
        QCOMPARE(f.inMessages<QWidget>(u"conversationScroll"_s)->geometry(), QRect(0, 0, 460, 416));
        const auto *field = f.inMessages<QPlainTextEdit>(u"replyField"_s);
        QCOMPARE(field->geometry(), QRect(22, 428, 416, 40));
        QCOMPARE(field->placeholderText(), u"Écris ta réponse ici"_s);
        const auto *send = f.inMessages<QPushButton>(u"sendButton"_s);
        QCOMPARE(send->text(), u"Envoyer"_s);
        QCOMPARE(send->geometry().x() + send->width(), 438);
        QCOMPARE(send->geometry().y() + send->height(), 506);
        const auto *note = f.inMessages<QLabel>(u"replyNote"_s);
        QCOMPARE(note->text(), u"Ta réponse arrive directement chez Orvane Labs."_s);
        QCOMPARE(QPoint(note->x(), note->y() + note->height()), QPoint(22, 500));
        QVERIFY(!note->geometry().intersects(send->geometry()));
        QVERIFY(field->hasFocus() || window->focusWidget() == field);
    }

    void theConversationIsLaidOutFromTheNewest()
    {
        Launched f;
        f.deliver(7, u"Bonjour"_s);
        f.press(u"alertDefault"_s);
        f.runLoop.advance(1min);
        f.channel.archiveOwn(u"Merci !"_s);
        f.delegate.showMessages();
        QCOMPARE(f.bodies(), (QStringList{u"Merci !"_s, u"Bonjour"_s}));
        const auto headers = f.window(u"messagesWindow"_s)->findChildren<QLabel *>(u"messageHeader"_s);
        QCOMPARE(headers.at(0)->text().section(u'·', 0, 0), u"Toi "_s);
        QCOMPARE(headers.at(1)->text().section(u'·', 0, 0), u"Orvane Labs "_s);
        QCOMPARE(headers.at(0)->pos(), QPoint(22, 20));
        const auto views = f.window(u"messagesWindow"_s)->findChildren<QTextEdit *>(u"messageBody"_s);
        QCOMPARE(views.at(0)->pos(), QPoint(22, 20 + headers.at(0)->height() + 5));
        QCOMPARE(views.at(0)->width(), 416);
        QCOMPARE(headers.at(1)->y(), views.at(0)->geometry().y() + views.at(0)->height() + 16 + 18);
    }

    void datesAreFrench()
    {
        Launched f;
        f.preferences.setValue(u"OBMessageHistory"_s,
                               QJsonArray{QJsonObject{{u"id"_s, 7},
                                                      {u"body"_s, u"Bonjour"_s},
                                                      {u"date"_s, u"2025-03-03T14:05:09.000Z"_s},
                                                      {u"mine"_s, false}}});
        f.delegate.showMessages();
        QCOMPARE(f.inMessages<QLabel>(u"messageHeader"_s)->text(), u"Orvane Labs · 3 mars 2025 à 14h05"_s);
    }

    void textsArePlain()
    {
        const QString text =
            u"<b>gras</b> <img src=\"https://example.invalid/x.png\"> &amp; http://example.invalid"_s;
        Launched f;
        f.deliver(7, text);
        QCOMPARE(f.dialogText(), u"Message de Orvane Labs / "_s + text);
        f.press(u"alertDefault"_s);
        f.delegate.showMessages();
        QCOMPARE(f.bodies(), QStringList{text});
    }

    void theWheelScrollsTheConversationAndNoText()
    {
        Launched f;
        f.deliver(7, u"Une ligne"_s);
        f.press(u"alertDefault"_s);
        f.delegate.showMessages();
        auto *text = f.inMessages<TextView>(u"messageBody"_s);
        QWheelEvent turned(QPointF(1, 1), QPointF(1, 1), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                           Qt::NoScrollPhase, false);
        turned.accept();
        QCoreApplication::sendEvent(text->viewport(), &turned);
        QVERIFY(!turned.isAccepted());
    }

    static void textsOfEveryKind_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("50,000 characters") << QString(50'000, u'x');
        QTest::newRow("a few lines") << u"Est-ce que la durée d'une pause pourra être choisie ? "_s.repeated(
            5);
        QTest::newRow("many lines") << u"ligne\n"_s.repeated(20'000);
        QTest::newRow("right to left") << u"שלום עולם مرحبا بالعالم"_s;
        QTest::newRow("emoji and combining marks")
            << u"👁️🧑🏽‍💻 e\u0301\u0302\u0303 "_s.repeated(40);
        QTest::newRow("control characters") << u"a\u0000b\u0007c\u202edroite"_s;
    }

    void textsOfEveryKind()
    {
        QFETCH(const QString, text);
        Launched f;
        f.deliver(7, text);
        QVERIFY(f.dialog()->height() < 600 && f.dialog()->width() < 600);
        f.press(u"alertDefault"_s);
        f.delegate.showMessages();
        QCOMPARE(f.window(u"messagesWindow"_s)->size(), QSize(460, 520));
        const auto *body = f.inMessages<QTextEdit>(u"messageBody"_s);
        QCOMPARE(body->width(), 416);
        QVERIFY(body->document()->size().width() <= 416);
        QVERIFY(body->height() <= f.inMessages<QWidget>(u"conversation"_s)->height());
        QCOMPARE(body->height(), qCeil(body->document()->size().height()));
    }

    void whiteSpaceIsNotSent()
    {
        Launched f;
        f.delegate.showMessages();
        auto *field = f.inMessages<QPlainTextEdit>(u"replyField"_s);
        field->setPlainText(u" \n\t "_s);
        QTest::mouseClick(f.inMessages<QPushButton>(u"sendButton"_s), Qt::LeftButton);
        QCOMPARE(field->toPlainText(), u" \n\t "_s);
        QCOMPARE(f.http.requests.size(), 1);
        QVERIFY(f.channel.messageHistory().isEmpty());
    }

    void aReplyIsKeptAndSent()
    {
        Launched f;
        f.http.requests.clear();
        f.delegate.showMessages();
        auto *field = f.inMessages<QPlainTextEdit>(u"replyField"_s);
        QTest::keyClicks(field, u"  Merci"_s);
        QTest::keyClick(field, Qt::Key_Return, Qt::ShiftModifier);
        QTest::keyClicks(field, u"beaucoup "_s);
        QTest::keyClick(field, Qt::Key_Return);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(f.bodies(), QStringList{u"Merci\nbeaucoup"_s});
        QVERIFY(f.channel.messageHistory().constFirst().mine);
        QCOMPARE(f.inMessages<QPlainTextEdit>(u"replyField"_s)->toPlainText(), QString());
        const QJsonObject body = f.http.requests.constFirst().json();
        QCOMPARE(f.http.requests.constFirst().url.path(), u"/api/report.php"_s);
        QCOMPARE(body[u"text"_s], QJsonValue(u"Merci\nbeaucoup"_s));
        QVERIFY(!body.contains(u"email"_s));
        f.answerReport(true);
        QVERIFY(!f.dialog());
    }

    void aReplyThatCouldNotBeSentIsKept()
    {
        Launched f;
        f.http.requests.clear();
        f.delegate.showMessages();
        f.inMessages<QPlainTextEdit>(u"replyField"_s)->setPlainText(u"Merci"_s);
        f.delegate.sendReply();
        QCOMPARE(f.channel.messageHistory().size(), 1);
        f.http.answer(std::nullopt);
        QCOMPARE(f.dialogText(),
                 u"Envoi impossible / Ta réponse n'a pas pu partir (réseau ?). Elle reste affichée "
                 "ici, réessaie plus tard ou écris à support@orvanebreak.invalid."_s);
        f.press(u"alertDefault"_s);
        QCOMPARE(f.channel.messageHistory().size(), 1);
        QCOMPARE(f.inMessages<QPlainTextEdit>(u"replyField"_s)->toPlainText(), u"Merci"_s);
    }

    void aReplyThatIsSentAgainStandsInTheConversationOnce()
    {
        Launched f;
        f.http.requests.clear();
        f.delegate.showMessages();
        f.inMessages<QPlainTextEdit>(u"replyField"_s)->setPlainText(u"Merci"_s);
        for (const std::optional<HttpAnswer> &answer :
             {std::optional<HttpAnswer>(), std::optional<HttpAnswer>(),
              std::optional(HttpAnswer{200, R"({"ok":true})"})}) {
            f.delegate.sendReply();
            QCOMPARE(f.http.requests.constFirst().json()[u"text"_s], QJsonValue(u"Merci"_s));
            f.http.answer(answer);
            if (f.dialog())
                f.press(u"alertDefault"_s);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QCOMPARE(f.bodies(), QStringList{u"Merci"_s});
        }
        f.inMessages<QPlainTextEdit>(u"replyField"_s)->setPlainText(u"Merci"_s);
        f.delegate.sendReply();
        QCOMPARE(f.channel.messageHistory().size(), 2);
    }

    void answersAfterTheEndAreIgnored()
    {
        auto f = std::make_unique<Launched>();
        const FakeHttp::Request request = f->http.requests.constFirst();
        f.reset();
        QVERIFY(!request.context);
    }
};

ORVANE_TEST(MessagesTest, QApplication)
#include "MessagesTest.moc"
