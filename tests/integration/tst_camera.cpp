// SPDX-License-Identifier: BSD-3-Clause
#include "picturesurface.h"

#include <QCamera>
#include <QCameraInfo>
#include <QFileInfo>
#include <QMediaService>
#include <QTest>
#include <QVideoSurfaceFormat>

#include <palaver/qpvrawvideosourcecontrol.h>

#include <algorithm>
#include <memory>

/*! What an unmodified application sees: QCamera and a surface of its own, nothing of ours. */
class TestCamera : public QObject
{
    Q_OBJECT
private slots:
    void availableCameras_describeThemselves();
    void defaultCamera_isTheFrontCamera();
    void statuses_followStatesUpAndDown();
    void pictures_arriveInOrder();
    void viewfinderSettings_listSizesAndRates();
    void viewfinderSettings_chooseSizeAndRate();
    void viewfinderSettings_changeWhileStreaming();
    void viewfinderSettings_thatAreNotOffered_giveError();
    void frontCamera_isMirrored();
    void secondConsumer_getsTheSamePictures();
    void surface_changedWhileStreaming_isStopped();
    void camera_openedTwice_streamsTwice();
    void hundredCycles_ofStartAndStop();
    void hundredCycles_ofReopening();
    void footage_isPlayed();
    void unknownCamera_givesError();
};

namespace {

/*! A camera that remembers what happened to it. */
class Camera
{
public:
    explicit Camera(const QByteArray &name)
        : m_camera(name)
    {
        QObject::connect(&m_camera, &QCamera::statusChanged,
                         [this](QCamera::Status status) { statuses.append(status); });
        QObject::connect(&m_camera, &QCamera::errorOccurred, [this](QCamera::Error error) {
            if (error != QCamera::NoError)
                errors.append(m_camera.errorString());
        });
        m_camera.setViewfinder(&surface);
    }
    QCamera *operator->() { return &m_camera; }
    bool hasPictures(int count) const { return surface.pictures.size() >= count; }

    PictureSurface surface; // outlives the camera
    QVector<QCamera::Status> statuses;
    QStringList errors;

private:
    QCamera m_camera;
};

QCameraViewfinderSettings settings(int width, int height, int rate)
{
    QCameraViewfinderSettings wanted;
    wanted.setResolution(width, height);
    wanted.setMinimumFrameRate(rate);
    wanted.setMaximumFrameRate(rate);
    return wanted;
}

QString footage()
{
    return QFileInfo(QStringLiteral(OCELLE_MEDIA_DIR "/flower-720p.mkv")).canonicalFilePath();
}

} // namespace

void TestCamera::availableCameras_describeThemselves()
{
    const QList<QCameraInfo> cameras = QCameraInfo::availableCameras();
    QVERIFY(cameras.size() >= 2);
    QCOMPARE(cameras[0].deviceName(), QStringLiteral("pattern:back"));
    QCOMPARE(cameras[0].description(), QStringLiteral("Pattern camera (back)"));
    QCOMPARE(cameras[0].position(), QCamera::BackFace);
    QCOMPARE(cameras[1].deviceName(), QStringLiteral("pattern:front"));
    QCOMPARE(cameras[1].description(), QStringLiteral("Pattern camera (front)"));
    QCOMPARE(cameras[1].position(), QCamera::FrontFace);
}

void TestCamera::defaultCamera_isTheFrontCamera()
{
    QCOMPARE(QCameraInfo::defaultCamera().deviceName(), QStringLiteral("pattern:front"));
}

void TestCamera::statuses_followStatesUpAndDown()
{
    Camera camera("pattern:back");
    camera->load();
    QTRY_COMPARE(camera->status(), QCamera::LoadedStatus);
    camera->start();
    QTRY_COMPARE(camera->status(), QCamera::ActiveStatus);
    camera->stop();
    QTRY_COMPARE(camera->status(), QCamera::StandbyStatus);
    camera->unload();
    QTRY_COMPARE(camera->status(), QCamera::UnloadedStatus);
    const QVector<QCamera::Status> expected { QCamera::LoadingStatus,   QCamera::LoadedStatus,
                                              QCamera::StartingStatus,  QCamera::ActiveStatus,
                                              QCamera::StoppingStatus,  QCamera::StandbyStatus,
                                              QCamera::UnloadingStatus, QCamera::UnloadedStatus };
    QTRY_COMPARE(camera.statuses, expected);
    QCOMPARE(camera.errors, QStringList());
}

void TestCamera::pictures_arriveInOrder()
{
    Camera camera("pattern:back");
    camera->start();
    QTRY_VERIFY(camera.hasPictures(20));
    camera->stop();
    QTRY_COMPARE(camera->status(), QCamera::StandbyStatus);
    QTRY_VERIFY(!camera.surface.isActive()); // the status is known before it is acted on

    QVERIFY(camera.surface.pictures.first().sequence);
    QVERIFY(camera.surface.sequenceRises());
    QCOMPARE(camera.surface.strays, 0);
    for (int i = 1; i < camera.surface.pictures.size(); ++i) {
        QVERIFY(camera.surface.pictures[i].startTime > camera.surface.pictures[i - 1].startTime);
    }
}

void TestCamera::viewfinderSettings_listSizesAndRates()
{
    Camera camera("pattern:back");
    camera->load();
    QTRY_COMPARE(camera->status(), QCamera::LoadedStatus);
    const QList<QSize> sizes { { 320, 240 }, { 640, 480 }, { 1280, 720 }, { 1920, 1080 } };
    QCOMPARE(camera->supportedViewfinderResolutions(), sizes);
    QVector<int> rates;
    for (const QCamera::FrameRateRange &range : camera->supportedViewfinderFrameRateRanges())
        rates.append(qRound(range.maximumFrameRate));
    std::sort(rates.begin(), rates.end());
    QCOMPARE(rates, (QVector<int> { 15, 30, 60 }));
}

void TestCamera::viewfinderSettings_chooseSizeAndRate()
{
    Camera camera("pattern:back");
    camera->setViewfinderSettings(settings(1280, 720, 15));
    camera->start();
    QTRY_VERIFY(camera.hasPictures(3));
    QCOMPARE(camera.surface.pictures.last().size, QSize(1280, 720));
    QCOMPARE(camera.surface.surfaceFormat().frameSize(), QSize(1280, 720));
    QCOMPARE(camera->viewfinderSettings().resolution(), QSize(1280, 720));
    const auto &pictures = camera.surface.pictures;
    const qint64 span = pictures.last().startTime - pictures.first().startTime;
    const quint32 periods = *pictures.last().sequence - *pictures.first().sequence;
    QVERIFY2(qAbs(span / periods - 1000000 / 15) < 10000, qPrintable(QString::number(span)));
}

void TestCamera::viewfinderSettings_changeWhileStreaming()
{
    Camera camera("pattern:back");
    camera->setViewfinderSettings(settings(320, 240, 30));
    camera->start();
    QTRY_VERIFY(camera.hasPictures(3));
    camera->setViewfinderSettings(settings(640, 480, 60));
    QTRY_COMPARE(camera.surface.pictures.last().size, QSize(640, 480));
    QTRY_COMPARE(camera->status(), QCamera::ActiveStatus);
    QCOMPARE(camera->state(), QCamera::ActiveState);
    QCOMPARE(camera.errors, QStringList());
}

void TestCamera::viewfinderSettings_thatAreNotOffered_giveError()
{
    Camera camera("pattern:back");
    camera->setViewfinderSettings(settings(641, 479, 30));
    camera->start();
    QTRY_COMPARE(camera.errors,
                 QStringList { QStringLiteral("Couldn't find supported camera settings") });
    QCOMPARE(camera->status(), QCamera::LoadedStatus);
    QVERIFY(camera.surface.pictures.isEmpty());

    camera->setViewfinderSettings(settings(640, 480, 30));
    camera->start();
    QTRY_VERIFY(camera.hasPictures(1));
}

void TestCamera::frontCamera_isMirrored()
{
    Camera front("pattern:front");
    front->start();
    QTRY_VERIFY(front.hasPictures(1));
    QVERIFY(front.surface.surfaceFormat().property("mirrored").toBool());

    Camera back("pattern:back");
    back->start();
    QTRY_VERIFY(back.hasPictures(1));
    QVERIFY(!back.surface.surfaceFormat().property("mirrored").toBool());
}

void TestCamera::secondConsumer_getsTheSamePictures()
{
    Camera camera("pattern:back");
    PictureSurface second;
    auto *const raw = camera->service()->requestControl<QPVRawVideoSourceControl *>();
    QVERIFY(raw);
    raw->setSurface(&second);
    camera->start();
    QTRY_VERIFY(camera.hasPictures(10) && second.pictures.size() >= 10);
    camera->stop();
    QTRY_COMPARE(camera->status(), QCamera::StandbyStatus);

    // The same picture is the same memory in both places.
    int shared = 0;
    for (const PictureSurface::Picture &one : qAsConst(camera.surface.pictures)) {
        for (const PictureSurface::Picture &other : qAsConst(second.pictures)) {
            if (one.sequence == other.sequence) {
                QCOMPARE(other.firstPlane, one.firstPlane);
                ++shared;
            }
        }
    }
    QVERIFY2(shared >= 5, qPrintable(QString::number(shared)));
    QVERIFY(second.sequenceRises());
    raw->setSurface(nullptr);
    camera->service()->releaseControl(raw);
}

void TestCamera::surface_changedWhileStreaming_isStopped()
{
    Camera camera("pattern:back");
    camera->start();
    QTRY_VERIFY(camera.hasPictures(3));

    PictureSurface other;
    camera->setViewfinder(&other);
    QTRY_VERIFY(other.pictures.size() >= 3);
    QVERIFY(!camera.surface.isActive());
    const int before = camera.surface.pictures.size();
    const int after = other.pictures.size();
    QTRY_VERIFY(other.pictures.size() >= after + 3);
    QCOMPARE(camera.surface.pictures.size(), before);
    camera->setViewfinder(static_cast<QAbstractVideoSurface *>(nullptr));
    QVERIFY(!other.isActive());
}

void TestCamera::camera_openedTwice_streamsTwice()
{
    Camera one("pattern:back");
    Camera two("pattern:back");
    one->start();
    two->start();
    QTRY_VERIFY(one.hasPictures(5) && two.hasPictures(5));
    one->unload();
    QTRY_COMPARE(one->status(), QCamera::UnloadedStatus);
    const int soFar = two.surface.pictures.size();
    QTRY_VERIFY(two.hasPictures(soFar + 5));
    QCOMPARE(one.errors + two.errors, QStringList());
}

void TestCamera::hundredCycles_ofStartAndStop()
{
    Camera camera("pattern:back");
    camera->setViewfinderSettings(settings(320, 240, 60));
    for (int i = 0; i < 100; ++i) {
        camera.surface.pictures.clear();
        camera->start();
        QTRY_VERIFY2(camera.hasPictures(1), qPrintable(QString::number(i)));
        camera->stop();
        QTRY_COMPARE(camera->status(), QCamera::StandbyStatus);
        QTRY_VERIFY(!camera.surface.isActive());
    }
    QCOMPARE(camera.errors, QStringList());
    QCOMPARE(camera.surface.starts, 100);
    QCOMPARE(camera.surface.stops, 100);
}

void TestCamera::hundredCycles_ofReopening()
{
    for (int i = 0; i < 100; ++i) {
        Camera camera(i % 2 ? "pattern:front" : "pattern:back");
        camera->setViewfinderSettings(settings(320, 240, 60));
        camera->start();
        QTRY_VERIFY2(camera.hasPictures(1), qPrintable(QString::number(i)));
        QCOMPARE(camera.errors, QStringList());
    }
}

void TestCamera::footage_isPlayed()
{
    if (footage().isEmpty())
        QSKIP("no footage: " OCELLE_MEDIA_DIR "/flower-720p.mkv is not there");
    Camera camera("file:" + footage().toUtf8());
    camera->start();
    QTRY_VERIFY2(camera.hasPictures(20), qPrintable(camera.errors.join(QLatin1Char(';'))));
    QSet<int> brightness;
    for (const PictureSurface::Picture &picture : qAsConst(camera.surface.pictures)) {
        QCOMPARE(picture.size, QSize(1280, 720));
        brightness.insert(picture.lumaMean);
        QVERIFY(!picture.sequence); // it is not the test picture
    }
    const int mean = camera.surface.pictures.last().lumaMean;
    QVERIFY2(mean > 30 && mean < 225, qPrintable(QString::number(mean)));
    QCOMPARE(camera.errors, QStringList());
}

void TestCamera::unknownCamera_givesError()
{
    const auto noCameras = QCameraInfo(QByteArray("no such camera"));
    QVERIFY(noCameras.isNull());
    Camera camera("no such camera");
    camera->start();
    QTRY_VERIFY(!camera.errors.isEmpty());
    QTRY_COMPARE(camera->state(), QCamera::UnloadedState);
    QVERIFY(camera.surface.pictures.isEmpty());
}

/*! The cameras are fixed when the back end is first used, so before anything of Qt's is. */
int main(int argc, char **argv)
{
    QByteArray cameras = "pattern";
    if (!footage().isEmpty())
        cameras += ",file:" + footage().toUtf8();
    qputenv("OCELLE_CAMERAS", cameras);
    QCoreApplication application(argc, argv);
    TestCamera test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_camera.moc"
