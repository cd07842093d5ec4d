// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakOverlayPanel.h"
#include "RingView.h"
#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QAccessible>
#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

#include <private/qguiapplication_p.h>

using namespace Qt::StringLiterals;

namespace {

/// The values that a screen reader was told of.
QVariantList toldValues;

void noteValue(QAccessibleEvent *event)
{
    if (event->type() == QAccessible::ValueChanged)
        toldValues.append(static_cast<QAccessibleValueChangeEvent *>(event)->value());
}

} // namespace

/// What screen readers are told of a break.
class BreakAccessibilityTest : public QObject
{
    Q_OBJECT

    static void setScreenReader(bool isActive)
    {
        QGuiApplicationPrivate::platformIntegration()->accessibility()->setActive(isActive);
    }

private Q_SLOTS:
    void init() { failOnUnexpectedWarnings(); }

    void thePanelIsADialogWithTheLengthInItsName()
    {
        BreakOverlayPanel panel(30);
        const QAccessibleInterface *dialog = QAccessible::queryAccessibleInterface(&panel);
        QCOMPARE(dialog->role(), QAccessible::Dialog);
        QCOMPARE(dialog->text(QAccessible::Name), u"Pause de 30\u00A0secondes"_s);
        QCOMPARE(dialog->text(QAccessible::Description),
                 u"Le bouton Passer et la touche Échap y mettent fin"_s);
        QCOMPARE(panel.windowTitle(), u"OrvaneBreak"_s);
    }

    void theRingIsAProgressBarInSeconds()
    {
        BreakOverlayPanel panel(60);
        QAccessibleInterface *ring = QAccessible::queryAccessibleInterface(panel.ring());
        QCOMPARE(ring->role(), QAccessible::ProgressBar);
        QCOMPARE(ring->text(QAccessible::Name), u"Secondes restantes"_s);
        QAccessibleValueInterface *value = ring->valueInterface();
        QVERIFY(value);
        QCOMPARE(value->maximumValue(), QVariant(60));
        QCOMPARE(value->minimumValue(), QVariant(0));
        QCOMPARE(value->currentValue(), QVariant(60));
        panel.ring()->setSecondsLeft(42);
        QCOMPARE(value->currentValue(), QVariant(42));
        value->setCurrentValue(3);
        QCOMPARE(panel.ring()->secondsLeft(), 42);
    }

    void theButtonSaysWhatItDoes()
    {
        BreakOverlayPanel panel(20);
        const QAccessibleInterface *button = QAccessible::queryAccessibleInterface(panel.skipButton());
        QCOMPARE(button->role(), QAccessible::Button);
        QCOMPARE(button->text(QAccessible::Name), u"Passer"_s);
        QCOMPARE(button->text(QAccessible::Description), u"Met fin à la pause, comme la touche Échap"_s);
    }

    void theValueIsToldOnceASecond()
    {
        const BreakOverlayPanel panel(20);
        setScreenReader(true);
        toldValues.clear();
        const auto previous = QAccessible::installUpdateHandler(&noteValue);
        for (int tick = 0; tick < 25; ++tick) {
            panel.ring()->setSecondsLeft(20 - tick / 10);
            panel.ring()->setFraction(1 - tick / 200.0);
        }
        QAccessible::installUpdateHandler(previous);
        setScreenReader(false);
        QCOMPARE(toldValues, (QVariantList{qint64(19), qint64(18)}));
    }
};

ORVANE_TEST(BreakAccessibilityTest, QApplication)
#include "BreakAccessibilityTest.moc"
