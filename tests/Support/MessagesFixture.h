// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ApplicationFixture.h"

#include <QDialog>
#include <QLabel>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>

/// The launched application, its messages window and its dialogs.
struct Launched : ApplicationFixture
{
    explicit Launched(bool isMenuBarMode = false)
    {
        preferences.setValue(QStringLiteral("OBMenuBarMode"), isMenuBarMode);
        launch();
    }

    /// Answers the oldest open check-in with a signed message.
    void deliver(qint64 id, const QString &message)
    {
        const QString nonce = http.requests.constFirst().json()[QStringLiteral("n")].toString();
        http.answer(
            HttpAnswer{200, jsonBytes(makers.answer(nonce, unixSeconds(runLoop.now()), id, message))});
    }

    void answerReport(bool isAccepted)
    {
        http.answer(HttpAnswer{200, isAccepted ? R"({"ok":true})" : R"({"ok":false})"});
    }

    /// The open dialog, or null.
    [[nodiscard]] static QDialog *dialog()
    {
        return qobject_cast<QDialog *>(QApplication::activeModalWidget());
    }

    [[nodiscard]] static QString textOf(const QWidget &parent, const QString &name)
    {
        const auto *edit = parent.findChild<QTextEdit *>(name);
        return edit ? edit->toPlainText() : parent.findChild<QLabel *>(name)->text();
    }

    /// The texts of the open dialog in one line.
    [[nodiscard]] static QString dialogText()
    {
        return dialog() ? textOf(*dialog(), QStringLiteral("alertMessage")) + QStringLiteral(" / ") +
                              textOf(*dialog(), QStringLiteral("alertInformation"))
                        : QStringLiteral("none");
    }

    static void press(const QString &name)
    {
        QPointer<QDialog> pressed = dialog();
        QTest::mouseClick(pressed->findChild<QPushButton *>(name), Qt::LeftButton);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }

    template <typename Widget>
    [[nodiscard]] static Widget *inMessages(const QString &name)
    {
        auto *found = window(QStringLiteral("messagesWindow"))->findChild<Widget *>(name);
        if (!found)
            qFatal("no such widget: %s", qPrintable(name));
        return found;
    }

    static QStringList bodies()
    {
        QStringList texts;
        for (const QTextEdit *body : window(QStringLiteral("messagesWindow"))
                                         ->findChildren<QTextEdit *>(QStringLiteral("messageBody")))
            texts << body->toPlainText();
        return texts;
    }

    [[nodiscard]] bool hasBadges() const
    {
        const bool onButton = !find<QWidget>(QStringLiteral("messagesBadge"))->isHidden();
        const QMenu *menu = window()->findChild<QMenuBar *>()->actions().at(0)->menu();
        const bool inMenu = menu->actions().at(1)->isVisible();
        if (onButton != inMenu)
            qFatal("the badges disagree");
        return onButton;
    }
};
