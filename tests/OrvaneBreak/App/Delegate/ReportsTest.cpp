// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/MessagesFixture.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// Reports to the makers and the queue of dialogs, with the real windows and without a network.
class ReportsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setWindowIcon(QPixmap(64, 64)); }

    void init() { failOnUnexpectedWarnings(); }

    void cleanup() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    void theReportForm()
    {
        Launched f;
        f.http.requests.clear();
        f.delegate.reportProblemPressed();
        QCOMPARE(f.dialogText(),
                 u"Signaler un problème / Décris ce qui ne va pas, ça arrive directement chez Orvane "
                 "Labs. La réponse s'affichera dans l'app."_s);
        auto *text = f.dialog()->findChild<QPlainTextEdit *>(u"reportText"_s);
        auto *email = f.dialog()->findChild<QLineEdit *>(u"reportEmail"_s);
        QCOMPARE(text->size(), QSize(380, 110));
        QCOMPARE(email->size(), QSize(380, 24));
        QCOMPARE(email->placeholderText(), u"ton email (facultatif, pour te répondre aussi par mail)"_s);
        QCOMPARE(f.dialog()->focusWidget(), text);
        QCOMPARE(f.dialog()->findChild<QPushButton *>(u"alertDefault"_s)->text(), u"Envoyer"_s);
        QCOMPARE(f.dialog()->findChild<QPushButton *>(u"alertCancel"_s)->text(), u"Annuler"_s);
        text->setPlainText(u"\n Ça ne va pas \n"_s);
        email->setText(u" moi@exemple.ch "_s);
        f.press(u"alertDefault"_s);
        QCOMPARE(f.http.requests.constFirst().json()[u"text"_s], QJsonValue(u"Ça ne va pas"_s));
        QCOMPARE(f.http.requests.constFirst().json()[u"email"_s], QJsonValue(u" moi@exemple.ch "_s));
        f.answerReport(true);
        QCOMPARE(f.dialogText(),
                 u"Merci ! / Ton signalement est bien parti. La réponse arrivera dans l'app."_s);
        f.press(u"alertDefault"_s);
        QVERIFY(f.channel.messageHistory().isEmpty());
    }

    void aReportThatCouldNotBeSent()
    {
        Launched f;
        f.http.requests.clear();
        f.delegate.reportProblemPressed();
        f.dialog()->findChild<QPlainTextEdit *>()->setPlainText(u"Ça ne va pas"_s);
        f.press(u"alertDefault"_s);
        f.answerReport(false);
        QCOMPARE(f.dialogText(),
                 u"Envoi impossible / Impossible d'envoyer pour le moment (réseau ?). Réessaie plus "
                 "tard ou écris à support@orvanebreak.invalid."_s);
        f.press(u"alertDefault"_s);
    }

    void aReportThatCouldNotBeSentIsInTheNextForm()
    {
        Launched f;
        f.http.requests.clear();
        const auto openForm = [&f] {
            f.delegate.reportProblemPressed();
            return std::pair(f.dialog()->findChild<QPlainTextEdit *>(), f.dialog()->findChild<QLineEdit *>());
        };
        const auto [text, email] = openForm();
        text->setPlainText(u"Ça ne va pas"_s);
        email->setText(u"moi@exemple.ch"_s);
        f.press(u"alertDefault"_s);
        f.answerReport(false);
        f.press(u"alertDefault"_s);
        const auto [again, emailAgain] = openForm();
        QCOMPARE(again->toPlainText(), u"Ça ne va pas"_s);
        QCOMPARE(emailAgain->text(), u"moi@exemple.ch"_s);
        f.press(u"alertDefault"_s);
        f.answerReport(true);
        f.press(u"alertDefault"_s);
        QCOMPARE(openForm().first->toPlainText(), QString());
        f.press(u"alertCancel"_s);
    }

    void anEmptyOrCancelledReportSendsNothing()
    {
        Launched f;
        f.http.requests.clear();
        f.delegate.reportProblemPressed();
        f.dialog()->findChild<QPlainTextEdit *>()->setPlainText(u" \n "_s);
        f.dialog()->findChild<QLineEdit *>(u"reportEmail"_s)->setText(u"moi@exemple.ch"_s);
        f.press(u"alertDefault"_s);
        QVERIFY(!f.dialog());
        f.delegate.reportProblemPressed();
        f.dialog()->findChild<QPlainTextEdit *>()->setPlainText(u"Ça ne va pas"_s);
        f.press(u"alertCancel"_s);
        QVERIFY(!f.dialog());
        QVERIFY(f.http.requests.isEmpty());
    }

    void dialogsAreShownOneByOneAndNeverDuringABreak()
    {
        Launched f;
        f.http.requests.clear();
        for (int count = 0; count < 2; ++count) {
            f.delegate.reportProblemPressed();
            f.dialog()->findChild<QPlainTextEdit *>()->setPlainText(u"Ça ne va pas"_s);
            f.press(u"alertDefault"_s);
        }
        f.engine.breakNow();
        f.answerReport(true);
        f.answerReport(false);
        QVERIFY(!f.dialog());
        f.runLoop.advance(21s);
        QCOMPARE(f.dialogText().section(u'/', 0, 0), u"Merci ! "_s);
        f.press(u"alertDefault"_s);
        QCOMPARE(f.dialogText().section(u'/', 0, 0), u"Envoi impossible "_s);
        f.press(u"alertDefault"_s);
        QVERIFY(!f.dialog());
    }

    void nothingWaitsForADialog()
    {
        Launched f;
        f.engine.start();
        f.deliver(7, u"Bonjour"_s);
        QVERIFY(f.dialog());
        f.runLoop.advance(20min + 1s);
        QVERIFY(f.overlay->isShown);
        f.runLoop.advance(21s);
        QVERIFY(!f.overlay->isShown);
        f.runLoop.advance(1h);
        QCOMPARE(f.http.requests.size(), 1);
        QVERIFY(f.dialog());
        f.press(u"alertDefault"_s);
    }
};

ORVANE_TEST(ReportsTest, QApplication)
#include "ReportsTest.moc"
