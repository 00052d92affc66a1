// SPDX-License-Identifier: BSD-3-Clause
#include "streamingcamera.h"

#include <QTest>
#include <QVideoSurfaceFormat>

#include <camerapreview.h>

using Viewer::CameraPreview;

class TestCameraPreview : public QObject
{
    Q_OBJECT
private slots:
    void pictures_goOn_andMirroringIsToldApart_data();
    void pictures_goOn_andMirroringIsToldApart();
    void camera_thatIsLetGo_showsNoMore();
};

void TestCameraPreview::pictures_goOn_andMirroringIsToldApart_data()
{
    QTest::addColumn<QByteArray>("id");
    QTest::addColumn<bool>("mirrored");
    QTest::newRow("back") << QByteArray("pattern:back") << false;
    QTest::newRow("front") << QByteArray("pattern:front") << true;
}

void TestCameraPreview::pictures_goOn_andMirroringIsToldApart()
{
    QFETCH(QByteArray, id);
    QFETCH(bool, mirrored);
    PictureCounter shown;
    CameraPreview preview;
    StreamingCamera camera(id);
    preview.setVideoSurface(&shown);
    preview.setCamera(camera.item());
    camera.camera()->start();
    QTRY_VERIFY(shown.pictures > 3);
    QCOMPARE(preview.isMirrored(), mirrored);
    QVERIFY(shown.isActive());
    QVERIFY(!shown.surfaceFormat().isMirrored());
    QCOMPARE(camera.surface()->pictures, 0);
}

void TestCameraPreview::camera_thatIsLetGo_showsNoMore()
{
    PictureCounter shown;
    CameraPreview preview;
    StreamingCamera camera("pattern:back");
    preview.setVideoSurface(&shown);
    preview.setCamera(camera.item());
    camera.camera()->start();
    QTRY_VERIFY(shown.pictures > 0);
    preview.setCamera(nullptr);
    camera.camera()->setViewfinder(camera.surface());
    const int before = shown.pictures;
    QTRY_VERIFY(camera.surface()->pictures > 3);
    QCOMPARE(shown.pictures, before);
}

QTEST_GUILESS_MAIN(TestCameraPreview)
#include "tst_camerapreview.moc"
