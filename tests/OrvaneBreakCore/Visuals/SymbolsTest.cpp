// SPDX-License-Identifier: GPL-3.0-or-later
#include "Symbols.h"

#include "Support/TestProgram.h"
#include "Support/Widgets.h"

#include <QApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QColor tint(20, 184, 166);

/// The share of the square that is covered, from 0 to 1.
double coverage(const QImage &image)
{
    double sum = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            sum += image.pixelColor(x, y).alphaF();
    return sum / (image.width() * image.height());
}

int opaquePixels(const QImage &image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y).alpha() == 255 ? 1 : 0;
    return count;
}

/// Whether each opaque pixel has exactly the colour `color`, and every other one a paler version of it.
bool isDrawnIn(const QImage &image, const QColor &color)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            QColor opaque = pixel;
            opaque.setAlpha(255);
            if (pixel.alpha() == 255 && pixel != color)
                return false;
            if (pixel.alpha() > 127 && !isNear(opaque, color))
                return false;
        }
    }
    return true;
}

bool isMirrored(const QImage &image, const QImage &mirrored)
{
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAbs(image.pixelColor(x, y).alpha() - mirrored.pixelColor(x, y).alpha()) > 16)
                return false;
    return true;
}

} // namespace

class SymbolsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnUnexpectedWarnings(); }

    void everySymbolIsDrawnInItsTint_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("size");
        QTest::addColumn<qreal>("scale");
        for (const QString &name :
             {u"eye"_s, u"eye.fill"_s, u"gearshape.fill"_s, u"envelope.fill"_s, u"chevron.left"_s})
            for (const int size : {14, 16, 22, 24, 32, 48, 128, 512})
                for (const qreal scale : {1.0, 1.5, 2.0})
                    QTest::addRow("%s %d at %g", qPrintable(name), size, scale) << name << size << scale;
    }

    void everySymbolIsDrawnInItsTint()
    {
        QFETCH(QString, name);
        QFETCH(int, size);
        QFETCH(qreal, scale);
        const QImage image = Symbols::image(name, size, tint, scale);
        QCOMPARE(image.size(), QSize(qRound(size * scale), qRound(size * scale)));
        QCOMPARE(image.devicePixelRatio(), scale);
        QVERIFY(isDrawnIn(image, tint));
        QVERIFY2(opaquePixels(image) > 0, "no opaque pixel at this size");
        const double covered = coverage(image);
        QVERIFY2(covered > 0.05 && covered < 0.75, qPrintable(QString::number(covered)));
        QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
        QCOMPARE(image.pixelColor(image.width() - 1, image.height() - 1).alpha(), 0);
    }

    void aSymbolCoversTheSameAtEverySize()
    {
        const double large = coverage(Symbols::image(u"gearshape.fill"_s, 512, tint, 1));
        QVERIFY(qAbs(coverage(Symbols::image(u"gearshape.fill"_s, 14, tint, 1.5)) - large) < 0.03);
        QVERIFY(qAbs(coverage(Symbols::image(u"gearshape.fill"_s, 22, tint, 2)) - large) < 0.03);
    }

    void aTranslucentTintStaysTranslucent()
    {
        const QImage image = Symbols::image(u"envelope.fill"_s, 64, QColor(255, 0, 0, 128), 1);
        QVERIFY(isNear(image.pixelColor(32, 46), QColor(255, 0, 0, 128)));
    }

    void theFilledEyeHasTheSameOutline()
    {
        const QImage open = Symbols::image(u"eye"_s, 96, tint, 1);
        const QImage filled = Symbols::image(u"eye.fill"_s, 96, tint, 1);
        QVERIFY(coverage(filled) > coverage(open) * 1.4);
        for (const int x : {8, 24, 48, 72, 88}) {
            int y = 0;
            for (; y < 96 && open.pixelColor(x, y).alpha() < 128; ++y)
                QVERIFY(filled.pixelColor(x, y).alpha() < 128);
            QVERIFY(y < 96);
            QVERIFY(filled.pixelColor(x, y).alpha() >= 128);
        }
        // In the filled eye the white and the iris are swapped.
        for (const int x : {22, 74}) {
            QCOMPARE(open.pixelColor(x, 48).alpha(), 0);
            QCOMPARE(filled.pixelColor(x, 48), tint);
        }
        for (const int x : {35, 60}) {
            QCOMPARE(open.pixelColor(x, 48), tint);
            QCOMPARE(filled.pixelColor(x, 48).alpha(), 0);
        }
        QCOMPARE(open.pixelColor(48, 48).alpha(), 0);
        QCOMPARE(filled.pixelColor(48, 48), tint);
    }

    void eyesAreSymmetric()
    {
        for (const QString &name : {u"eye"_s, u"eye.fill"_s}) {
            for (const int size : {16, 22, 48, 128}) {
                const QImage image = Symbols::image(name, size, tint, 1);
                QVERIFY(isMirrored(image, image.mirrored(true, false)));
                QVERIFY(isMirrored(image, image.mirrored(false, true)));
            }
        }
    }

    void shapesOfTheOtherSymbols()
    {
        const QImage gear = Symbols::image(u"gearshape.fill"_s, 96, tint, 1);
        QCOMPARE(gear.pixelColor(48, 48).alpha(), 0);
        QCOMPARE(gear.pixelColor(48, 10), tint);
        QCOMPARE(gear.pixelColor(63, 11).alpha(), 0);

        const QImage envelope = Symbols::image(u"envelope.fill"_s, 96, tint, 1);
        QCOMPARE(envelope.pixelColor(48, 30), tint);
        QCOMPARE(envelope.pixelColor(48, 55).alpha(), 0);
        QCOMPARE(envelope.pixelColor(48, 70), tint);

        const QImage chevron = Symbols::image(u"chevron.left"_s, 96, tint, 1);
        QCOMPARE(chevron.pixelColor(34, 48), tint);
        QCOMPARE(chevron.pixelColor(60, 48).alpha(), 0);
        QCOMPARE(chevron.pixelColor(60, 21), tint);
        QCOMPARE(chevron.pixelColor(60, 74), tint);
    }

    void unknownNamesAndEmptySquares()
    {
        QVERIFY(Symbols::image(u"nothing"_s, 24, tint, 1).isNull());
        QVERIFY(Symbols::image(QString(), 24, tint, 1).isNull());
        QVERIFY(Symbols::image(u"eye"_s, 0, tint, 1).isNull());
        QVERIFY(Symbols::image(u"eye"_s, -3, tint, 1).isNull());
        QVERIFY(Symbols::icon(u"nothing"_s, tint).isNull());
    }

    void anIconHasEachSize()
    {
        const QIcon icon = Symbols::icon(u"eye.fill"_s, tint);
        for (const int size : {14, 16, 18, 20, 22, 24, 32, 36, 44, 48, 64}) {
            QVERIFY(icon.availableSizes().contains(QSize(size, size)));
            const QImage image = icon.pixmap(QSize(size, size), 1).toImage();
            QCOMPARE(image.convertToFormat(QImage::Format_ARGB32_Premultiplied),
                     Symbols::image(u"eye.fill"_s, size, tint, 1));
        }
        QVERIFY(icon.name().isEmpty());
    }

    void theApplicationIconHasEachSize()
    {
        const QIcon icon = Symbols::applicationIcon();
        for (const int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
            QVERIFY(icon.availableSizes().contains(QSize(size, size)));
            const QImage image = icon.pixmap(QSize(size, size), 1).toImage();
            QCOMPARE(image.size(), QSize(size, size));
            QVERIFY(image.pixelColor(0, 0).alpha() < 128);
            QVERIFY(isNear(image.pixelColor(size / 5, size / 2), Qt::white, 40));
        }
        const QImage image = icon.pixmap(QSize(256, 256), 1).toImage();
        QVERIFY(isNear(image.pixelColor(128, 10), QColor(0x2D, 0xD4, 0xBF)));
        QVERIFY(isNear(image.pixelColor(128, 246), QColor(0x0D, 0x94, 0x88)));
        // The countdown: three quarters of the iris, clockwise from above.
        const QColor counted(0x0F, 0x76, 0x6E);
        QVERIFY(isNear(image.pixelColor(128 + 30, 128 - 30), counted));
        QVERIFY(isNear(image.pixelColor(128 + 30, 128 + 30), counted));
        QVERIFY(isNear(image.pixelColor(128 - 30, 128 + 30), counted));
        QVERIFY(isNear(image.pixelColor(128 - 30, 128 - 30), QColor(0x99, 0xE6, 0xDA)));
    }
};

ORVANE_TEST(SymbolsTest, QApplication)
#include "SymbolsTest.moc"
