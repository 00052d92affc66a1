// SPDX-License-Identifier: BSD-3-Clause
#include "patternreader.h"
#include "previewsurface.h"
#include "previewwindow.h"
#include "testpattern.h"

#include <QScreen>
#include <QVideoSurfaceFormat>
#include <QtTest>

using namespace Tool;
using namespace Veltra::Ocelle;

class PreviewWindowTest : public QObject
{
    Q_OBJECT
private slots:
    void showsTheNewestPicture_data();
    void showsTheNewestPicture();
    void isBlack_beforeTheFirstPicture();
    void keepsTheShapeOfThePicture();
    void opensNoLargerThanTheScreen();
    void closesByKeyOrByHand_data();
    void closesByKeyOrByHand();

private:
    static QVideoFrame picture(quint32 number)
    {
        QVideoFrame frame(320 * 240 * 3 / 2, QSize(320, 240), 320, QVideoFrame::Format_NV12);
        if (!frame.map(QAbstractVideoBuffer::WriteOnly))
            return QVideoFrame();
        const TestPattern pattern(320, 240, PixelFormat::NV12);
        const TestPattern::Planes planes {
            { { frame.bits(0), 320 }, { frame.bits(1), 320 }, { nullptr, 0 } }
        };
        pattern.paintBackground(planes);
        pattern.update(planes, number, 0);
        frame.unmap();
        return frame;
    }
    static bool present(PreviewSurface *surface, quint32 number, bool mirrored)
    {
        QVideoSurfaceFormat format(QSize(320, 240), QVideoFrame::Format_NV12);
        format.setMirrored(mirrored);
        return surface->start(format) && surface->present(picture(number));
    }
    static QImage shown(const PreviewWindow &window)
    {
        return window.screen()
                ->grabWindow(window.winId())
                .toImage()
                .convertToFormat(QImage::Format_RGB32);
    }
    static std::optional<PatternReading> read(const QImage &image)
    {
        return readPatternRgb32(image.constBits(), image.bytesPerLine(), image.width(),
                                image.height());
    }
};

void PreviewWindowTest::showsTheNewestPicture_data()
{
    QTest::addColumn<bool>("mirrored");
    QTest::newRow("plain") << false;
    QTest::newRow("mirrored") << true;
}

void PreviewWindowTest::showsTheNewestPicture()
{
    QFETCH(bool, mirrored);
    PreviewSurface surface;
    PreviewWindow window(&surface);
    window.open(QSize(320, 240));
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    for (const quint32 number : { 7U, 8U }) {
        QVERIFY(present(&surface, number, mirrored));
        window.update();
        QTRY_COMPARE(read(shown(window)).value_or(PatternReading()).sequence, number);
        QCOMPARE(read(shown(window))->mirrored, mirrored);
        surface.stop(); // as when the camera stops: the picture stays
    }
}

void PreviewWindowTest::isBlack_beforeTheFirstPicture()
{
    PreviewSurface surface;
    PreviewWindow window(&surface);
    window.open(QSize(100, 80));
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTRY_COMPARE(shown(window).pixelColor(50, 40), QColor(Qt::black));
}

void PreviewWindowTest::keepsTheShapeOfThePicture()
{
    PreviewSurface surface;
    PreviewWindow window(&surface);
    QVERIFY(present(&surface, 9, false));
    window.open(QSize(400, 240)); // 40 black columns on either side
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTRY_VERIFY(read(shown(window).copy(40, 0, 320, 240)).has_value());
    QCOMPARE(shown(window).pixelColor(20, 20), QColor(Qt::black));
    QCOMPARE(shown(window).pixelColor(380, 200), QColor(Qt::black));
}

void PreviewWindowTest::opensNoLargerThanTheScreen()
{
    PreviewSurface surface;
    PreviewWindow window(&surface);
    const QSize screen = window.screen()->availableSize();
    window.open(QSize(16000, 8000));
    QVERIFY(window.width() <= screen.width());
    QVERIFY(window.height() <= screen.height());
    QVERIFY(qAbs(window.width() - 2 * window.height()) <= 2);
}

void PreviewWindowTest::closesByKeyOrByHand_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Escape") << int(Qt::Key_Escape);
    QTest::newRow("Q") << int(Qt::Key_Q);
    QTest::newRow("by hand") << 0;
}

void PreviewWindowTest::closesByKeyOrByHand()
{
    QFETCH(int, key);
    PreviewSurface surface;
    PreviewWindow window(&surface);
    QSignalSpy closed(&window, &PreviewWindow::closed);
    window.open(QSize(320, 240));
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTest::keyClick(&window, Qt::Key_A);
    QCOMPARE(closed.size(), 0);
    if (key != 0)
        QTest::keyClick(&window, Qt::Key(key));
    else
        window.close();
    QTRY_COMPARE(closed.size(), 1);
    QVERIFY(!window.isVisible());
}

QTEST_MAIN(PreviewWindowTest)
#include "tst_previewwindow.moc"
