// SPDX-License-Identifier: GPL-3.0-or-later
#include "MenuMirror.h"

#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QPointer>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// "|" is a separator; every other name is also the entry's text unless given as name=text.
std::unique_ptr<QMenu> menuOf(const QStringList &entries, QStringList *triggered = nullptr)
{
    auto menu = std::make_unique<QMenu>();
    for (const QString &entry : entries) {
        const QString name = entry.section(u'=', 0, 0);
        QAction *action = menu->addAction(entry.section(u'=', -1));
        action->setObjectName(name);
        action->setSeparator(name.startsWith(u'|'));
        QObject::connect(action, &QAction::triggered, action, [triggered, entry] {
            if (triggered)
                triggered->append(entry);
        });
    }
    return menu;
}

QStringList texts(MenuMirror &mirror)
{
    QStringList result;
    for (const QAction *action : mirror.shownMenu()->actions())
        result << (action->isSeparator() ? action->objectName() : action->text());
    return result;
}

} // namespace

class MenuMirrorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnUnexpectedWarnings(); }

    void showsTheLatestMenuInItsOrder_data()
    {
        QTest::addColumn<QStringList>("first");
        QTest::addColumn<QStringList>("second");
        const QStringList usual{u"a"_s, u"b"_s, u"|1"_s, u"c"_s};
        QTest::newRow("same") << usual << usual;
        QTest::newRow("inserted") << usual
                                  << QStringList{u"a"_s, u"b"_s, u"|1"_s, u"new"_s, u"c"_s, u"|2"_s, u"d"_s};
        QTest::newRow("removed") << usual << QStringList{u"b"_s, u"c"_s};
        QTest::newRow("reversed") << usual << QStringList{u"c"_s, u"|1"_s, u"b"_s, u"a"_s};
        QTest::newRow("emptied") << usual << QStringList();
        QTest::newRow("filled") << QStringList() << usual;
    }

    void showsTheLatestMenuInItsOrder()
    {
        QFETCH(const QStringList, first);
        QFETCH(const QStringList, second);
        MenuMirror mirror;
        mirror.setMenu(menuOf(first));
        QCOMPARE(texts(mirror), first);
        mirror.setMenu(menuOf(second));
        QCOMPARE(texts(mirror), second);
    }

    void entriesOfTheSameNameKeepTheirIdentity()
    {
        MenuMirror mirror;
        mirror.setMenu(menuOf({u"toggle=on"_s, u"quit"_s}));
        const QList<QAction *> before = mirror.shownMenu()->actions();
        mirror.setMenu(menuOf({u"toggle=off"_s, u"message"_s, u"quit"_s}));
        const QList<QAction *> after = mirror.shownMenu()->actions();
        QCOMPARE(after.at(0), before.at(0));
        QCOMPARE(after.at(0)->text(), u"off"_s);
        QCOMPARE(after.at(2), before.at(1));
    }

    void anEntryShowsItsIcon()
    {
        MenuMirror mirror;
        mirror.setMenu(menuOf({u"message"_s}));
        const QAction *shown = mirror.shownMenu()->actions().constFirst();
        QVERIFY(shown->icon().isNull());
        auto menu = menuOf({u"message"_s});
        QPixmap badge(4, 4);
        badge.fill(Qt::red);
        const QIcon icon(badge);
        menu->actions().constFirst()->setIcon(icon);
        mirror.setMenu(std::move(menu));
        QCOMPARE(shown->icon().cacheKey(), icon.cacheKey());
    }

    void aClickReachesTheLatestMenuOnly()
    {
        MenuMirror mirror;
        QStringList first;
        QStringList second;
        mirror.setMenu(menuOf({u"toggle=on"_s}, &first));
        QAction *shown = mirror.shownMenu()->actions().constFirst();
        mirror.setMenu(menuOf({u"toggle=off"_s}, &second));
        shown->trigger();
        QCOMPARE(first, QStringList());
        QCOMPARE(second, QStringList{u"toggle=off"_s});
    }

    void aMenuReplacedByItsOwnEntrySurvivesTheClick()
    {
        MenuMirror mirror;
        auto menu = std::make_unique<QMenu>();
        const QPointer<QMenu> first = menu.get();
        QAction *action = menu->addAction(u"toggle"_s);
        action->setObjectName(u"toggle"_s);
        connect(action, &QAction::triggered, this, [&] { mirror.setMenu(menuOf({u"toggle=again"_s})); });
        mirror.setMenu(std::move(menu));
        mirror.shownMenu()->actions().constFirst()->trigger();
        QVERIFY(first);
        QCOMPARE(texts(mirror), QStringList{u"again"_s});
        QTRY_VERIFY(!first);
    }

    void stateIsMirrored()
    {
        MenuMirror mirror;
        auto menu = menuOf({u"a"_s, u"b"_s});
        menu->actions().at(0)->setEnabled(false);
        menu->actions().at(1)->setVisible(false);
        menu->actions().at(0)->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
        mirror.setMenu(std::move(menu));
        QVERIFY(!mirror.shownMenu()->actions().at(0)->isEnabled());
        QVERIFY(!mirror.shownMenu()->actions().at(1)->isVisible());
        QCOMPARE(mirror.shownMenu()->actions().at(0)->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q));
    }
};

ORVANE_TEST(MenuMirrorTest, QApplication)
#include "MenuMirrorTest.moc"
