// SPDX-License-Identifier: GPL-3.0-or-later
#include "DescriptorReserve.h"

#include "Support/NoDescriptors.h"
#include "Support/TestProgram.h"

#include <QApplication>
#include <QTest>
#include <QWidget>

namespace {

bool canOpen()
{
    return FileDescriptor(open("/dev/null", O_RDONLY | O_CLOEXEC)).isOpen();
}

/// Counts how often it is painted, and how often a descriptor is free then.
class Window final : public QWidget
{
public:
    int paintings = 0;
    int paintingsWithDescriptors = 0;

protected:
    void paintEvent(QPaintEvent * /*event*/) override
    {
        ++paintings;
        paintingsWithDescriptors += canOpen() ? 1 : 0;
    }
};

} // namespace

class DescriptorReserveTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void windowIsShownAndResizedWithoutFreeDescriptors()
    {
        const DescriptorReserve reserve;
        const NoDescriptors none;
        QVERIFY(!canOpen());
        Window window;
        window.resize(100, 100);
        window.show();
        QTRY_VERIFY(window.paintings > 0);
        QCOMPARE(window.paintingsWithDescriptors, window.paintings);
        QTRY_VERIFY(!canOpen());
        const int before = window.paintings;
        window.resize(200, 200);
        QTRY_VERIFY(window.paintings > before);
        QCOMPARE(window.paintingsWithDescriptors, window.paintings);
        QTRY_VERIFY(!canOpen());
    }
};

ORVANE_TEST(DescriptorReserveTest, QApplication)
#include "DescriptorReserveTest.moc"
