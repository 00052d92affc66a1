// SPDX-License-Identifier: BSD-3-Clause
#include "yuvpicture.h"

#include <QtTest>

using Tool::YuvPicture;

class YuvPictureTest : public QObject
{
    Q_OBJECT
private slots:
    void sameSamples_areEqual_inBothLayouts();
    void error_isCountedOverAllPlanes();
    void viewport_isCutOut_data();
    void viewport_isCutOut();
    void otherFormats_giveNoPicture();
    void psnr_isThatOfTheMeanError();
    void difference_isAmplified();
};

namespace {

const QSize Size(16, 8);

/*! Every luma sample tells where it is; chroma is the same everywhere. */
QVideoFrame frameOf(QVideoFrame::PixelFormat format)
{
    const int luma = Size.width() * Size.height();
    QVideoFrame frame(luma * 3 / 2, Size, Size.width(), format);
    frame.map(QAbstractVideoBuffer::WriteOnly);
    for (int i = 0; i < luma; ++i)
        frame.bits()[i] = uchar(i);
    for (int i = 0; i < luma / 2; ++i) {
        const bool isCb = format == QVideoFrame::Format_NV12 ? i % 2 == 0 : i < luma / 4;
        frame.bits()[luma + i] = isCb ? 90 : 200;
    }
    frame.unmap();
    return frame;
}

QVideoFrame changed(QVideoFrame frame, int index, int value)
{
    frame.map(QAbstractVideoBuffer::ReadWrite);
    frame.bits()[index] = uchar(value);
    frame.unmap();
    return frame;
}

} // namespace

void YuvPictureTest::sameSamples_areEqual_inBothLayouts()
{
    const YuvPicture planar(frameOf(QVideoFrame::Format_YUV420P), QRect());
    const YuvPicture interleaved(frameOf(QVideoFrame::Format_NV12), QRect());
    QCOMPARE(planar.size(), Size);
    QCOMPARE(planar.samples(), qint64(16 * 8 * 3 / 2));
    QCOMPARE(planar.squaredErrorTo(interleaved), std::uint64_t(0));
    QCOMPARE(planar.image().size(), Size);
}

void YuvPictureTest::error_isCountedOverAllPlanes()
{
    const YuvPicture whole(frameOf(QVideoFrame::Format_YUV420P), QRect());
    const YuvPicture luma(changed(frameOf(QVideoFrame::Format_YUV420P), 5, 5 + 3), QRect());
    const YuvPicture chroma(changed(frameOf(QVideoFrame::Format_YUV420P), 16 * 8 + 40, 200 - 10),
                            QRect());
    QCOMPARE(whole.squaredErrorTo(luma), std::uint64_t(9));
    QCOMPARE(whole.squaredErrorTo(chroma), std::uint64_t(100));
}

void YuvPictureTest::viewport_isCutOut_data()
{
    QTest::addColumn<QRect>("part");
    QTest::newRow("even") << QRect(4, 2, 6, 4);
    QTest::newRow("odd column") << QRect(3, 2, 6, 4);
    QTest::newRow("odd line") << QRect(4, 1, 6, 4);
    QTest::newRow("odd, to the last pixel") << QRect(1, 1, 15, 7);
}

void YuvPictureTest::viewport_isCutOut()
{
    QFETCH(QRect, part);
    for (const auto format : { QVideoFrame::Format_YUV420P, QVideoFrame::Format_NV12 }) {
        const YuvPicture cut(frameOf(format), part);
        QCOMPARE(cut.size(), part.size());
        const QImage whole = YuvPicture(frameOf(format), QRect()).image();
        QCOMPARE(cut.image(), whole.copy(part));
    }
}

void YuvPictureTest::otherFormats_giveNoPicture()
{
    QVERIFY(YuvPicture().isNull());
    QVERIFY(YuvPicture(QVideoFrame(16 * 8 * 4, Size, 16 * 4, QVideoFrame::Format_RGB32), QRect())
                    .isNull());
}

void YuvPictureTest::psnr_isThatOfTheMeanError()
{
    QCOMPARE(Tool::psnr(0, 100), 99.0);
    QCOMPARE(Tool::psnr(100 * 65025, 100), 0.0);
    QVERIFY(qAbs(Tool::psnr(100, 100) - 48.1308) < 0.0001);
}

void YuvPictureTest::difference_isAmplified()
{
    QImage one(2, 1, QImage::Format_RGB32);
    QImage other(2, 1, QImage::Format_RGB32);
    one.setPixel(0, 0, qRgb(10, 20, 30));
    other.setPixel(0, 0, qRgb(12, 20, 25));
    one.setPixel(1, 0, qRgb(0, 0, 0));
    other.setPixel(1, 0, qRgb(255, 31, 32));
    const QImage result = Tool::difference(one, other, 8);
    QCOMPARE(result.pixel(0, 0), qRgb(16, 0, 40));
    QCOMPARE(result.pixel(1, 0), qRgb(255, 248, 255));
}

QTEST_GUILESS_MAIN(YuvPictureTest)
#include "tst_yuvpicture.moc"
