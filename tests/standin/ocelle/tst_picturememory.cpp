// SPDX-License-Identifier: BSD-3-Clause
#include "capabilities.h"
#include "picturememory.h"

#include <QtTest>

using namespace Veltra::Ocelle;

class TestPictureMemory : public QObject
{
    Q_OBJECT
private slots:
    void allocate_laysOutThePlanes_data();
    void allocate_laysOutThePlanes();
    void allocate_keepsTheMemory_whereNothingChanges();
    void findNearest_goesBySizeThenRate();
};

void TestPictureMemory::allocate_laysOutThePlanes_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("nv12");
    QTest::newRow("NV12") << 640 << 480 << true;
    QTest::newRow("YU12") << 640 << 480 << false;
    QTest::newRow("NV12, odd") << 321 << 241 << true;
    QTest::newRow("YU12, odd") << 321 << 241 << false;
    QTest::newRow("YU12, one pixel") << 1 << 1 << false;
}

void TestPictureMemory::allocate_laysOutThePlanes()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(bool, nv12);
    PictureMemory picture;
    QVERIFY(picture.allocate(width, height, nv12 ? PixelFormat::NV12 : PixelFormat::YU12));
    QCOMPARE(picture.width, width);
    QCOMPARE(picture.height, height);
    QCOMPARE(picture.planeCount, nv12 ? 2 : 3);
    for (int i = 0; i < picture.planeCount; ++i) {
        const GraphicBuffer::Plane &plane = picture.planes[std::size_t(i)];
        const int bytes = i == 0 ? width : (width + 1) / 2 * (nv12 ? 2 : 1);
        QVERIFY(plane.stride >= bytes && plane.stride % 64 == 0);
        QCOMPARE(plane.lines, i == 0 ? height : (height + 1) / 2);
        QCOMPARE(quintptr(plane.data) % 64, quintptr(0));
        const auto &writable = picture.writablePlanes()[std::size_t(i)];
        QVERIFY(writable.data == plane.data && writable.stride == plane.stride);
        for (int line = 0; line < plane.lines; ++line) // beyond the memory: for the sanitizers
            std::fill_n(writable.data + std::ptrdiff_t(line) * plane.stride, plane.stride,
                        std::uint8_t(i));
    }
    for (int i = 0; i < picture.planeCount; ++i) // no plane was written by another
        QCOMPARE(int(*picture.planes[std::size_t(i)].data), i);
}

void TestPictureMemory::allocate_keepsTheMemory_whereNothingChanges()
{
    PictureMemory picture;
    QVERIFY(picture.allocate(320, 240, PixelFormat::NV12));
    const std::uint8_t *const data = picture.planes[0].data;
    picture.planes = {}; // as a picture does that lies elsewhere for a while
    picture.width = 1;
    QVERIFY(!picture.allocate(320, 240, PixelFormat::NV12));
    QCOMPARE(picture.planes[0].data, data);
    QCOMPARE(picture.width, 320);
    QVERIFY(picture.allocate(320, 240, PixelFormat::YU12));
    QVERIFY(picture.allocate(640, 240, PixelFormat::YU12));
}

void TestPictureMemory::findNearest_goesBySizeThenRate()
{
    const std::vector<CameraCapability> offered { { 640, 480, 30 },
                                                  { 1280, 720, 15 },
                                                  { 1280, 720, 60 } };
    QVERIFY(isSame(*findNearest(offered, { 1279, 720, 50 }), offered[2]));
    QVERIFY(isSame(*findNearest(offered, { 1920, 1080, 1 }), offered[1]));
    QVERIFY(isSame(*findNearest(offered, { 0, 0, 0 }), offered[0]));
    QVERIFY(!findNearest({}, { 640, 480, 30 }));
    QCOMPARE(QString::fromStdString(toText(offered[0])),
             QString("640x480 at 30 frames per second"));
}

QTEST_APPLESS_MAIN(TestPictureMemory)
#include "tst_picturememory.moc"
