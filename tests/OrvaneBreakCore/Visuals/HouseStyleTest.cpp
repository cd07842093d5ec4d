// SPDX-License-Identifier: GPL-3.0-or-later
#include "HouseStyle.h"

#include "AccentButton.h"
#include "Palette.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QMenuBar>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTest>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

/// `color` composited over `background`.
QColor over(const QColor &color, const QColor &background)
{
    const auto mixed = [alpha = color.alphaF()](float above, float below) {
        return std::clamp(above * alpha + below * (1 - alpha), 0.0F, 1.0F);
    };
    return QColor::fromRgbF(mixed(color.redF(), background.redF()),
                            mixed(color.greenF(), background.greenF()),
                            mixed(color.blueF(), background.blueF()));
}

double luminance(const QColor &color)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// The contrast of text and background as accessibility guidelines count it: from 1 to 21.
double contrast(const QColor &text, const QColor &background)
{
    const double first = luminance(over(text, background)) + 0.05;
    const double second = luminance(background) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

QPalette housePalette(bool isDark)
{
    return isDark ? darkPalette() : lightPalette();
}

} // namespace

class HouseStyleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void initTestCase() { QApplication::setStyle(new HouseStyle); }

    static void init()
    {
        failOnUnexpectedWarnings();
        QApplication::setPalette(lightPalette());
    }

    /// Runs first, because loaded plugins stay loaded.
    static void menuBarsLoadNoPicturePlugins()
    {
        const QMenuBar bar;
        QFile maps(u"/proc/self/maps"_s);
        QVERIFY(maps.open(QIODevice::ReadOnly));
        const QByteArray loaded = maps.readAll();
        QVERIFY(loaded.contains("/platforms/"));
        QVERIFY(!loaded.contains("/imageformats/"));
    }

    static void textsAreReadable_data()
    {
        QTest::addColumn<bool>("isDark");
        QTest::newRow("light") << false;
        QTest::newRow("dark") << true;
    }

    static void textsAreReadable()
    {
        QFETCH(const bool, isDark);
        const QPalette palette = housePalette(isDark);
        const QColor window = palette.color(QPalette::Window);
        const QColor card = over(shade(palette, 0.05F), window);
        for (const AppearanceColor &text :
             {labelColor(), secondaryLabelColor(), tertiaryLabelColor(), orvaneMauve(), accentColor()}) {
            QVERIFY(contrast(text.resolved(palette), window) >= 4.5);
            QVERIFY(contrast(text.resolved(palette), card) >= 4.5);
        }
        for (const auto &[text, surface] :
             {std::pair(QPalette::Text, QPalette::Base), std::pair(QPalette::PlaceholderText, QPalette::Base),
              std::pair(QPalette::ButtonText, QPalette::Button),
              std::pair(QPalette::WindowText, QPalette::Window),
              std::pair(QPalette::ToolTipText, QPalette::ToolTipBase),
              std::pair(QPalette::HighlightedText, QPalette::Highlight)})
            QVERIFY2(contrast(palette.color(text), palette.color(surface)) >= 4.5,
                     qPrintable(QString::number(text)));
    }

    static void buttonsShowHoveringAndPressing()
    {
        QPushButton button(u"Signaler un problème…"_s);
        button.resize(button.sizeHint());
        const QImage still = painted(button, Qt::white);
        button.setAttribute(Qt::WA_UnderMouse);
        const QImage below = painted(button, Qt::white);
        QVERIFY(below != still);
        button.setDown(true);
        QVERIFY(painted(button, Qt::white) != below);
        button.setDown(false);
        button.setAttribute(Qt::WA_UnderMouse, false);
        QCOMPARE(painted(button, Qt::white), still);
        button.setEnabled(false);
        const QImage disabled = painted(button, Qt::white);
        button.setAttribute(Qt::WA_UnderMouse);
        QCOMPARE(painted(button, Qt::white), disabled);
    }

    static void theDefaultButtonHasTheAccentOfTheBreaks()
    {
        QPushButton button(u"Envoyer"_s);
        button.setDefault(true);
        button.resize(120, 28);
        QVERIFY(isNear(painted(button, Qt::white).pixelColor(10, 14), breakTealFixed));
        button.setDefault(false);
        QVERIFY(isNear(painted(button, Qt::white).pixelColor(10, 14), Qt::white));
    }

    static void controlsShowTheFocusOfTheKeyboard()
    {
        QWidget window;
        QVBoxLayout layout(&window);
        auto *popUp = new QComboBox;
        popUp->addItem(u"20 minutes"_s);
        QWidget *controls[] = {new QPushButton(u"Passer"_s), popUp};
        for (QWidget *control : controls)
            layout.addWidget(control);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        for (QWidget *control : controls)
            QVERIFY(showsFocusOfTheKeyboard(window, *control));
    }

    static void textFieldsShowTheFocus()
    {
        QWidget window;
        QVBoxLayout layout(&window);
        auto *other = new QPushButton(u"Envoyer"_s);
        layout.addWidget(other);
        QWidget *fields[] = {new QLineEdit, new QPlainTextEdit};
        for (QWidget *field : fields)
            layout.addWidget(field);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        for (QWidget *field : fields) {
            const QPoint edge(field->width() / 2, 1);
            other->setFocus();
            QVERIFY(!isNear(painted(*field, Qt::white).pixelColor(edge), breakTeal().light, 20));
            field->setFocus();
            QVERIFY(isNear(painted(*field, Qt::white).pixelColor(edge), breakTeal().light, 20));
        }
    }

    static void theMenuBarIsPartOfItsWindow()
    {
        QMenuBar bar;
        bar.setNativeMenuBar(false);
        bar.addMenu(u"Édition"_s);
        bar.resize(300, bar.sizeHint().height());
        const QImage image = painted(bar, QColor(1, 2, 3));
        QCOMPARE(image.pixelColor(250, image.height() - 1), image.pixelColor(250, 2));
    }

    static void theMenuBarHighlightsTheActiveMenu()
    {
        QMenuBar bar;
        bar.setNativeMenuBar(false);
        bar.addAction(u"OrvaneBreak"_s);
        QAction *second = bar.addAction(u"Édition"_s);
        bar.resize(300, bar.sizeHint().height());
        const QPoint corner = bar.actionGeometry(second).topLeft() + QPoint(6, 3);
        const QImage still = painted(bar, Qt::white);
        bar.setActiveAction(second);
        const QImage marked = painted(bar, Qt::white);
        QVERIFY(marked.pixelColor(corner) != still.pixelColor(corner));
        QCOMPARE(marked.pixelColor(6, 3), still.pixelColor(6, 3));
    }

    static void otherElementsAreDrawnByTheBaseStyle()
    {
        const QWidget plain;
        QSpinBox number;
        QStyleOptionFocusRect focus;
        focus.rect = QRect(0, 0, 40, 20);
        QStyleOptionSpinBox spin;
        spin.initFrom(&number);
        spin.rect = focus.rect;
        const auto draw = [&](QStyle &style) {
            QImage image(40, 20, QImage::Format_RGB32);
            image.fill(Qt::white);
            QPainter painter(&image);
            style.drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, &plain);
            style.drawPrimitive(QStyle::PE_IndicatorArrowDown, &focus, &painter, &plain);
            style.drawComplexControl(QStyle::CC_SpinBox, &spin, &painter, &number);
            return image;
        };
        const std::unique_ptr<QStyle> baseStyle(QStyleFactory::create(u"fusion"_s));
        HouseStyle house;
        QCOMPARE(draw(house), draw(*baseStyle));
        QVERIFY(!house.standardIcon(QStyle::SP_MessageBoxWarning, nullptr, nullptr).isNull());
    }

    static void replacedElementsAreNotDrawn()
    {
        QMenuBar bar;
        QPushButton button;
        QStyleOptionFocusRect focus;
        focus.rect = QRect(0, 0, 40, 20);
        QImage image(40, 20, QImage::Format_RGB32);
        image.fill(Qt::white);
        const QImage empty = image;
        QPainter painter(&image);
        HouseStyle house;
        house.drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, &button);
        house.drawPrimitive(QStyle::PE_PanelMenuBar, &focus, &painter, &bar);
        painter.end();
        QCOMPARE(image, empty);
    }
};

ORVANE_TEST(HouseStyleTest, QApplication)
#include "HouseStyleTest.moc"
