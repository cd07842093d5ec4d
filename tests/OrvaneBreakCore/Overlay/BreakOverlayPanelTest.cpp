// SPDX-License-Identifier: GPL-3.0-or-later
#include "BreakOverlayPanel.h"

#include "RingView.h"
#include "Support/TestProgram.h"
#include "Support/WideFont.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

class BreakOverlayPanelTest : public QObject
{
    Q_OBJECT

    struct Shown
    {
        explicit Shown(QSize size = {1280, 720})
            : panel(20)
        {
            panel.resize(size);
            panel.show();
            [[maybe_unused]] const bool isExposed = QTest::qWaitForWindowExposed(&panel);
            panel.activateWindow();
        }

        template <typename Widget>
        QRect place(const QString &name)
        {
            auto *widget = panel.findChild<Widget *>(name);
            return {widget->mapTo(&panel, QPoint()), widget->size()};
        }

        /// From top to bottom.
        QList<QRect> parts()
        {
            return {place<QLabel>(u"title"_s), place<QLabel>(u"subtitle"_s),
                    QRect(panel.ring()->pos(), panel.ring()->size()), place<QPushButton>(u"skipButton"_s),
                    place<QLabel>(u"hint"_s)};
        }

        BreakOverlayPanel panel;
    };

private Q_SLOTS:
    void init() { failOnUnexpectedWarnings(); }

    void textsAndFonts_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("weight");
        QTest::addColumn<double>("alpha");
        QTest::newRow("title") << u"title"_s << u"Regarde au loin, à 6 mètres"_s << 30 << int(QFont::Bold)
                               << 1.0;
        QTest::newRow("subtitle") << u"subtitle"_s << u"Laisse tes yeux se reposer un instant."_s << 16
                                  << int(QFont::Normal) << 0.7;
        QTest::newRow("hint") << u"hint"_s << u"ou appuie sur Échap"_s << 11 << int(QFont::Normal) << 0.35;
    }

    void textsAndFonts()
    {
        QFETCH(const QString, name);
        QFETCH(const QString, text);
        QFETCH(const int, size);
        QFETCH(const int, weight);
        QFETCH(const double, alpha);
        Shown shown;
        const auto *label = shown.panel.findChild<QLabel *>(name);
        QCOMPARE(label->text(), text);
        QCOMPARE(label->textFormat(), Qt::PlainText);
        QCOMPARE(label->font().pixelSize(), size);
        QCOMPARE(int(label->font().weight()), weight);
        QVERIFY(label->alignment().testFlag(Qt::AlignCenter));
        const QColor color = label->palette().color(QPalette::WindowText);
        QCOMPARE(color.rgb(), QColor(Qt::white).rgb());
        QVERIFY(qAbs(color.alphaF() - alpha) < 0.01);
    }

    void skipButton()
    {
        Shown shown;
        const QPushButton *button = shown.panel.skipButton();
        QCOMPARE(button->text(), u"Passer"_s);
        QCOMPARE(button->font().pixelSize(), 13);
        QCOMPARE(button->font().weight(), QFont::Medium);
        QCOMPARE(button->focusPolicy(), Qt::NoFocus);
        QVERIFY(button->width() >= 44 && button->height() >= 24);
    }

    void columnIsCentredWithItsGaps()
    {
        Shown shown;
        const QRect title = shown.place<QLabel>(u"title"_s);
        const QRect subtitle = shown.place<QLabel>(u"subtitle"_s);
        const QRect target = shown.place<QPushButton>(u"skipButton"_s);
        const QRect button = target - QMargins(12, 8, 12, 4);
        QCOMPARE(button.height(), QFontMetrics(shown.panel.skipButton()->font()).height());
        const QRect hint = shown.place<QLabel>(u"hint"_s);
        const QRect ring(shown.panel.ring()->pos(), shown.panel.ring()->size());
        QCOMPARE(ring.size(), QSize(150, 150));
        QCOMPARE(subtitle.y() - (title.y() + title.height()), 10);
        QCOMPARE(ring.y() - (subtitle.y() + subtitle.height()), 28);
        QCOMPARE(button.y() - (ring.y() + ring.height()), 30);
        QCOMPARE(hint.y() - (button.y() + button.height()), 4);
        for (const QRect &place : {title, subtitle, ring, target, hint})
            QVERIFY(qAbs(2 * place.x() + place.width() - 1280) <= 1);
        QVERIFY(qAbs(title.y() + hint.y() + hint.height() - 720) <= 1);
    }

    void everythingElseIsThreeQuartersBlack()
    {
        Shown shown;
        QImage image = painted(shown.panel, QColor(0, 0, 0, 0));
        QPainter eraser(&image);
        eraser.setCompositionMode(QPainter::CompositionMode_Source);
        for (const QRect &part : shown.parts())
            eraser.fillRect(part, QColor(0, 0, 0, 191));
        eraser.end();
        QImage expected(image.size(), image.format());
        expected.fill(QColor(0, 0, 0, 191));
        QCOMPARE(image, expected);
    }

    void contentNeverChangesTheFrame_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("stretch");
        QTest::newRow("1080 x 1920 at scale 2, a font 30 % wider") << QSize(540, 960) << 130;
        QTest::newRow("800 x 600 at scale 2") << QSize(400, 300) << 100;
        QTest::newRow("800 x 600 at scale 2, a font 30 % wider") << QSize(400, 300) << 130;
        QTest::newRow("1024 x 768 at scale 4") << QSize(256, 192) << 100;
        QTest::newRow("low") << QSize(1280, 240) << 100;
    }

    void contentNeverChangesTheFrame()
    {
        QFETCH(const QSize, size);
        QFETCH(const int, stretch);
        const WideFont font(stretch);
        Shown shown(size);
        QCOMPARE(shown.panel.size(), size);
        QCOMPARE(shown.panel.minimumSize(), QSize(0, 0));
        const QList<QRect> parts = shown.parts();
        for (int index = 0; index < parts.size(); ++index) {
            QVERIFY2(shown.panel.rect().contains(parts[index]), qPrintable(QString::number(index)));
            QVERIFY(qAbs(2 * parts[index].x() + parts[index].width() - size.width()) <= 1);
            QVERIFY(index == 0 || parts[index - 1].bottom() < parts[index].top());
        }
        QVERIFY(qAbs(parts.first().top() + parts.last().bottom() + 1 - size.height()) <= 1);
        for (const QWidget *part : shown.panel.findChildren<QWidget *>())
            QVERIFY2(part->width() >= part->sizeHint().width(), qPrintable(part->objectName()));
    }

    void theWholeColumnShrinksByOneFactor()
    {
        Shown shown({400, 300});
        const double factor = shown.panel.ring()->width() / 150.0;
        QVERIFY(factor < 1 && factor > 0.7);
        const QList<std::pair<QString, int>> sizes{
            {u"title"_s, 30}, {u"subtitle"_s, 16}, {u"skipButton"_s, 13}, {u"hint"_s, 11}};
        for (const auto &[name, size] : sizes) {
            const int shrunk = shown.panel.findChild<QWidget *>(name)->font().pixelSize();
            QVERIFY2(shrunk <= size * factor + 0.1 && shrunk > size * factor - 1.1, qPrintable(name));
        }
        const QList<QRect> parts = shown.parts();
        for (const auto &[index, gap] : {std::pair(1, 10), std::pair(2, 28)}) {
            const int shrunk = parts[index].top() - parts[index - 1].bottom() - 1;
            QVERIFY2(shrunk <= gap * factor + 0.3 && shrunk > gap * factor - 1.3,
                     qPrintable(QString::number(shrunk)));
        }
        shown.panel.resize(1280, 720);
        QCOMPARE(shown.panel.ring()->size(), QSize(150, 150));
        QCOMPARE(shown.panel.findChild<QWidget *>(u"title"_s)->font().pixelSize(), 30);
    }

    void escapeCallsOnce()
    {
        Shown shown;
        int calls = 0;
        shown.panel.onEscape = [&] { ++calls; };
        QTest::keyClick(&shown.panel, Qt::Key_Escape);
        QCOMPARE(calls, 1);
        shown.panel.cancelOperation();
        QCOMPARE(calls, 2);
    }

    void cancelCommand_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<int>("calls");
        constexpr Qt::KeyboardModifiers control = Qt::ControlModifier;
        QTest::newRow("its own key") << int(Qt::Key_Period) << control << 1;
        QTest::newRow("with Shift") << int(Qt::Key_Period) << (control | Qt::ShiftModifier) << 1;
        QTest::newRow("keypad") << int(Qt::Key_Period) << (control | Qt::KeypadModifier) << 1;
        QTest::newRow("with AltGr") << int(Qt::Key_Period) << (control | Qt::GroupSwitchModifier) << 1;
        QTest::newRow("period alone") << int(Qt::Key_Period) << Qt::KeyboardModifiers() << 0;
        QTest::newRow("with Alt") << int(Qt::Key_Period) << (control | Qt::AltModifier) << 0;
        QTest::newRow("with Meta") << int(Qt::Key_Period) << (control | Qt::MetaModifier) << 0;
        QTest::newRow("comma") << int(Qt::Key_Comma) << control << 0;
    }

    void cancelCommand()
    {
        QFETCH(const int, key);
        QFETCH(const Qt::KeyboardModifiers, modifiers);
        QFETCH(const int, calls);
        Shown shown;
        int seen = 0;
        shown.panel.onEscape = [&] { ++seen; };
        QTest::keyClick(&shown.panel, Qt::Key(key), modifiers);
        QCOMPARE(seen, calls);
    }

    void theKeyIsKnownWhileItIsHandled()
    {
        Shown shown;
        quint32 seen = 0;
        shown.panel.onEscape = [&] { seen = shown.panel.pressedKey(); };
        constexpr quint32 code = 9;
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, code, 0, 0);
        QCoreApplication::sendEvent(&shown.panel, &press);
        QCOMPARE(seen, code);
        QCOMPARE(shown.panel.pressedKey(), 0U);
    }

    void escapeIsSwallowedAndOtherKeysPassOn()
    {
        struct Parent : QWidget
        {
            QList<int> keys;
            void keyPressEvent(QKeyEvent *event) override { keys.append(event->key()); }
        } parent;
        auto *panel = new BreakOverlayPanel(20);
        panel->setParent(&parent);
        parent.show();
        QVERIFY(QTest::qWaitForWindowExposed(&parent));
        QTest::keyClick(panel, Qt::Key_Escape);
        QTest::keyClick(panel, Qt::Key_A);
        QTest::keyClick(panel, Qt::Key_Return);
        QCOMPARE(parent.keys, (QList<int>{Qt::Key_A, Qt::Key_Return}));
    }

    void nothingTypedPressesTheButton()
    {
        Shown shown;
        int clicks = 0;
        connect(shown.panel.skipButton(), &QPushButton::clicked, this, [&] { ++clicks; });
        const QList<Qt::Key> keys{Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Tab,
                                  Qt::Key_Space, Qt::Key_Down,   Qt::Key_P,     Qt::Key_Space};
        for (const Qt::Key key : keys)
            QTest::keyClick(shown.panel.windowHandle(), key);
        for (const Qt::Key key : keys)
            QTest::keyClick(shown.panel.windowHandle(), key, Qt::AltModifier);
        QCOMPARE(clicks, 0);
        QVERIFY(!shown.panel.skipButton()->hasFocus());
    }

    void clickPressesTheButton()
    {
        Shown shown;
        int clicks = 0;
        connect(shown.panel.skipButton(), &QPushButton::clicked, this, [&] { ++clicks; });
        const QPoint centre = shown.place<QPushButton>(u"skipButton"_s).center();
        QTest::mouseClick(shown.panel.windowHandle(), Qt::LeftButton, {}, centre);
        QCOMPARE(clicks, 1);
        QVERIFY(!shown.panel.skipButton()->hasFocus());
    }

    void ringShowsTheLengthUntilTheFirstUpdate()
    {
        const BreakOverlayPanel panel(60);
        QCOMPARE(panel.ring()->secondsLeft(), 60);
        QCOMPARE(panel.ring()->fraction(), 1.0);
    }
};

ORVANE_TEST(BreakOverlayPanelTest, QApplication)
#include "BreakOverlayPanelTest.moc"
