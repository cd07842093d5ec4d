// SPDX-License-Identifier: GPL-3.0-or-later
#include "WritingField.h"

#include "FrenchToolkit.h"
#include "MessagesWindow.h"
#include "ReportForm.h"
#include "Support/TestProgram.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>

#include <ctime>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString limitText = u"Texte trop long\u00a0: 20\u202f000 caractères au maximum."_s;
const QString usualNote = u"Ta réponse arrive directement chez Orvane Labs."_s;

void paste(WritingField &field, const QString &text)
{
    QApplication::clipboard()->setText(text);
    field.paste();
}

} // namespace

/// The fields for texts to the makers.
class WritingFieldTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theContextMenuIsFrench()
    {
        FrenchToolkit french;
        QApplication::installTranslator(&french);
        WritingField field;
        const std::unique_ptr<QMenu> menu(field.createStandardContextMenu());
        QLineEdit line;
        const std::unique_ptr<QMenu> menuOfLine(line.createStandardContextMenu());
        for (const QMenu *each : {menu.get(), menuOfLine.get()}) {
            QStringList texts;
            for (const QAction *action : each->actions())
                texts << action->text().section(u'\t', 0, 0).remove(u'&');
            QCOMPARE(texts, (QStringList{u"Annuler"_s,
                                         u"Rétablir"_s,
                                         {},
                                         u"Couper"_s,
                                         u"Copier"_s,
                                         u"Coller"_s,
                                         u"Supprimer"_s,
                                         {},
                                         u"Tout sélectionner"_s}));
        }
    }

    void theTextIsExact()
    {
        WritingField field;
        const QString text =
            u"Ça va\u00a0? 1\u202f000\u2003fois\n\nest-ce\u00a0:\toui\u200b \ufeff\U0001f600"_s;
        paste(field, text);
        QCOMPARE(field.text(), text);
        field.clear();
        QTest::keyClicks(&field, u"a"_s);
        QTest::keyClick(&field, Qt::Key_Return, Qt::ShiftModifier);
        QTest::keyClicks(&field, u"b"_s);
        QTest::keyClick(&field, Qt::Key_Return);
        QCOMPARE(field.text(), u"a\nb\n"_s);
    }

    void aPasteBeyondTheLimitIsRefusedAtOnce()
    {
        WritingField field;
        field.resize(416, 40);
        field.show();
        QList<bool> told;
        connect(&field, &WritingField::limitChecked, &field,
                [&told](bool isExceeded) { told.append(isExceeded); });
        const std::clock_t start = std::clock();
        paste(field, QString(1'100'000, u'x'));
        QCoreApplication::processEvents();
        QVERIFY(std::clock() - start < CLOCKS_PER_SEC / 10);
        QCOMPARE(field.text(), QString());
        QCOMPARE(told, QList<bool>{true});
        paste(field, QString(20'000, u'x'));
        QCOMPARE(field.text().size(), 20'000);
        paste(field, u"y"_s);
        QCOMPARE(field.text().size(), 20'000);
        field.selectAll();
        paste(field, QString(20'000, u'z'));
        QCOMPARE(field.text(), QString(20'000, u'z'));
        QVERIFY(!field.isTooLong());
    }

    void aReplyThatIsTooLongIsNotSent()
    {
        MessagesWindow window;
        int sent = 0;
        window.onSend = [&sent] { ++sent; };
        window.display({});
        auto *field = window.findChild<ReplyField *>();
        const auto *note = window.findChild<QLabel *>(u"replyNote"_s);
        auto *button = window.findChild<QPushButton *>(u"sendButton"_s);
        QCOMPARE(note->text(), usualNote);
        field->setPlainText(QString(20'001, u'x'));
        QCOMPARE(note->text(), limitText);
        QVERIFY(!note->geometry().intersects(button->geometry()));
        button->click();
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(sent, 0);
        QCOMPARE(window.reply().size(), 20'001);
        QTest::keyClick(field, Qt::Key_Delete);
        QCOMPARE(note->text(), usualNote);
        button->click();
        QCOMPARE(sent, 1);
    }

    void returnSendsFromWhereverTheFocusIs()
    {
        MessagesWindow window;
        int sent = 0;
        window.onSend = [&sent] { ++sent; };
        window.display({{1, u"Bonjour"_s, QDateTime::currentDateTimeUtc(), false}});
        window.show();
        for (const QString &name :
             {u"replyField"_s, u"messageBody"_s, u"conversationScroll"_s, u"sendButton"_s}) {
            auto *widget = window.findChild<QWidget *>(name);
            widget->setFocus();
            for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
                sent = 0;
                QTest::keyClick(widget, key);
                QVERIFY2(sent == 1, qPrintable(name));
            }
        }
        QCOMPARE(window.reply(), QString());
    }

    void aReplyIsPutBackUnlessAnotherOneIsBegun()
    {
        MessagesWindow window;
        window.restoreReply(u"avant"_s);
        window.display({});
        window.restoreReply(u"un\u00a0deux\ntrois"_s);
        QCOMPARE(window.reply(), u"un\u00a0deux\ntrois"_s);
        window.restoreReply(u"quatre"_s);
        QCOMPARE(window.reply(), u"un\u00a0deux\ntrois"_s);
    }

    void aReportThatIsTooLongKeepsItsFormOpen()
    {
        ReportForm form;
        form.show();
        const auto *limit = form.findChild<QLabel *>(u"reportLimit"_s);
        auto *field = form.findChild<WritingField *>();
        QVERIFY(!limit->isVisible());
        field->setPlainText(QString(20'001, u'x'));
        QVERIFY(limit->isVisible());
        QCOMPARE(limit->text(), limitText);
        form.findChild<QPushButton *>(u"alertDefault"_s)->click();
        QVERIFY(form.isVisible());
        field->setPlainText(u"Ça\u00a0ne va pas"_s);
        QVERIFY(!limit->isVisible());
        form.findChild<QPushButton *>(u"alertDefault"_s)->click();
        QVERIFY(!form.isVisible());
        QCOMPARE(form.result(), int(QDialog::Accepted));
        QCOMPARE(form.text(), u"Ça\u00a0ne va pas"_s);
    }

    void aFormCanStartWithAReport()
    {
        const ReportForm form(u"Ça ne va pas"_s, u"moi@exemple.ch"_s);
        QCOMPARE(form.text(), u"Ça ne va pas"_s);
        QCOMPARE(form.email(), u"moi@exemple.ch"_s);
    }
};

ORVANE_TEST(WritingFieldTest, QApplication)
#include "WritingFieldTest.moc"
