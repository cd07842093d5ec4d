// SPDX-License-Identifier: GPL-3.0-or-later
#include "Palette.h"

#include "AccentButton.h"
#include "AccentCheckBox.h"
#include "HouseStyle.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"
#include "SymbolButton.h"
#include "TextButton.h"

#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QPalette palette(bool isDark)
{
    return {isDark ? QColor(Qt::white) : QColor(Qt::black),
            isDark ? QColor(40, 40, 40) : QColor(240, 240, 240)};
}

bool hasComponents(const QColor &color, double red, double green, double blue)
{
    return qAbs(color.redF() - red) < 0.001 && qAbs(color.greenF() - green) < 0.001 &&
           qAbs(color.blueF() - blue) < 0.001 && color.alpha() == 255;
}

} // namespace

class PaletteTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnUnexpectedWarnings(); }

    void accentsFollowTheAppearance()
    {
        QVERIFY(hasComponents(breakTeal().resolved(::palette(false)), 0.051, 0.58, 0.533));
        QVERIFY(hasComponents(breakTeal().resolved(::palette(true)), 0.176, 0.831, 0.749));
        QVERIFY(hasComponents(orvaneMauve().resolved(::palette(false)), 0.486, 0.227, 0.929));
        QVERIFY(hasComponents(orvaneMauve().resolved(::palette(true)), 0.686, 0.573, 0.992));
    }

    void fixedAccents()
    {
        QVERIFY(hasComponents(breakTealFixed, 0.078, 0.722, 0.651));
        QVERIFY(hasComponents(orvaneMauveFixed, 0.486, 0.227, 0.929));
    }

    void labelIsCentredPlainText()
    {
        const std::unique_ptr<QLabel> label(
            makeLabel(u"<b>Réglages</b>"_s, 20, QFont::Bold, QColor(Qt::white)));
        QVERIFY(label->alignment() == Qt::AlignCenter);
        QCOMPARE(label->textFormat(), Qt::PlainText);
        QCOMPARE(label->text(), u"<b>Réglages</b>"_s);
        QCOMPARE(label->font().pixelSize(), 20);
        QCOMPARE(label->font().weight(), QFont::Bold);
    }

    void labelFollowsTheAppearance()
    {
        QWidget window;
        auto *label = makeLabel(u"x"_s, 13, QFont::Normal, breakTeal());
        label->setParent(&window);
        window.setPalette(::palette(true));
        QCOMPARE(label->palette().color(QPalette::WindowText), breakTeal().dark);
        window.setPalette(::palette(false));
        QCOMPARE(label->palette().color(QPalette::WindowText), breakTeal().light);
        label->setTextColor(orvaneMauve());
        QCOMPARE(label->palette().color(QPalette::WindowText), orvaneMauve().light);
    }

    void clicksOnABadgeReachTheButtonBelow()
    {
        QWidget window;
        window.resize(100, 100);
        QPushButton button(&window);
        button.setGeometry(10, 10, 60, 60);
        BadgeImageView badge(&window);
        badge.setGeometry(20, 20, 20, 20);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        int clicks = 0;
        connect(&button, &QPushButton::clicked, this, [&] { ++clicks; });
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(30, 30));
        QCOMPARE(clicks, 1);
    }

    void badge_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("sameAs");
        QTest::newRow("0 is drawn as 1") << 0 << 1;
        QTest::newRow("a negative count is drawn as 1") << -7 << 1;
        QTest::newRow("3") << 3 << 3;
    }

    void badge()
    {
        QFETCH(const int, count);
        QFETCH(const int, sameAs);
        for (const qreal scale : {1.0, 1.5, 2.0}) {
            const QImage image = quotaBadgeImage(count, 16, scale);
            QCOMPARE(image.deviceIndependentSize(), QSizeF(16, 16));
            QCOMPARE(image, quotaBadgeImage(sameAs, 16, scale));
            const int size = image.width();
            QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
            QCOMPARE(image.pixelColor(size / 2, 1).alpha() > 200, true);
            QVERIFY(isNear(image.pixelColor(size / 8, size / 2), QColor(255, 59, 48)));
            int white = 0;
            for (int y = 0; y < size; ++y) {
                for (int x = 0; x < size; ++x)
                    white += isNear(image.pixelColor(x, y), Qt::white, 90) ? 1 : 0;
            }
            QVERIFY(white > size / 4);
        }
        QVERIFY(quotaBadgeImage(3, 16, 2) != quotaBadgeImage(1, 16, 2));
        QVERIFY(quotaBadgeImage(12, 16, 2) != quotaBadgeImage(1, 16, 2));
    }

    void theBadgeFollowsTheAppearance()
    {
        QApplication::setPalette(darkPalette());
        QVERIFY(isNear(quotaBadgeImage(1, 16, 1).pixelColor(2, 8), QColor(255, 69, 58)));
        QApplication::setPalette(QPalette());
    }

    void textButtonBrightensUnderThePointer()
    {
        TextButton button(u"Passer"_s, systemFont(13, QFont::Medium), QColor::fromRgbF(1, 1, 1, 0.55F),
                          {12, 8, 12, 4});
        button.resize(button.sizeHint());
        const auto brightest = [&] {
            const QImage image = painted(button);
            int lightness = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x)
                    lightness = std::max(lightness, image.pixelColor(x, y).lightness());
            }
            return lightness;
        };
        const int before = brightest();
        QVERIFY(before > 100 && before < 160);
        button.setAttribute(Qt::WA_UnderMouse);
        QVERIFY(brightest() > before + 40);
        button.setDown(true);
        QVERIFY(brightest() < before);
        QCOMPARE(button.cursor().shape(), Qt::PointingHandCursor);
    }

    void buttonsShowHoveringAndPressing()
    {
        AccentButton accent(u"Envoyer"_s, breakTealFixed);
        SymbolButton symbol(u"eye"_s, 16, u"Veille"_s);
        AccentCheckBox box(u"Son"_s);
        AccentCheckBox checkedBox(u"Son"_s);
        checkedBox.setChecked(true);
        for (QAbstractButton *button :
             {static_cast<QAbstractButton *>(&accent), static_cast<QAbstractButton *>(&symbol),
              static_cast<QAbstractButton *>(&box)}) {
            button->resize(button->sizeHint().expandedTo({30, 30}));
            const QImage still = painted(*button, Qt::white);
            button->setAttribute(Qt::WA_UnderMouse);
            const QImage below = painted(*button, Qt::white);
            QVERIFY(below != still);
            button->setDown(true);
            QVERIFY(painted(*button, Qt::white) != below);
            button->setDown(false);
            button->setAttribute(Qt::WA_UnderMouse, false);
            QCOMPARE(painted(*button, Qt::white), still);
        }
        checkedBox.resize(checkedBox.sizeHint());
        const QImage checked = painted(checkedBox, Qt::white);
        checkedBox.setDown(true);
        QVERIFY(painted(checkedBox, Qt::white) != checked);
    }

    void theFocusIsShownAfterTheKeyboardHasMovedIt()
    {
        QWidget window;
        QVBoxLayout layout(&window);
        QWidget *controls[] = {
            new AccentButton(u"Envoyer"_s, breakTealFixed), new AccentCheckBox(u"Son"_s),
            new SymbolButton(u"eye"_s, 16, u"Veille"_s),
            new TextButton(u"Passer"_s, systemFont(13, QFont::Medium), labelColor(), {12, 8, 12, 4})};
        for (QWidget *control : controls)
            layout.addWidget(control);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        for (QWidget *control : controls)
            QVERIFY(showsFocusOfTheKeyboard(window, *control));
    }
};

ORVANE_TEST(PaletteTest, QApplication)
#include "PaletteTest.moc"
