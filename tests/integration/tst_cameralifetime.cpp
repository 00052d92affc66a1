// SPDX-License-Identifier: BSD-3-Clause
#include "picturesurface.h"

#include <QCamera>
#include <QCoreApplication>
#include <QEventLoop>
#include <QMetaEnum>
#include <QPointer>
#include <QProcess>
#include <QTest>
#include <QTimer>

#include <memory>

/*! A camera may be destroyed at any moment; nothing hangs, and nothing is presented afterwards. */
class TestCameraLifetime : public QObject
{
    Q_OBJECT
private slots:
    void destroyed_inEveryStatus_withEventLoopRunning_data() { addStatuses(); }
    void destroyed_inEveryStatus_withEventLoopRunning();
    void destroyed_inEveryStatus_afterExecReturned_data() { addStatuses(); }
    void destroyed_inEveryStatus_afterExecReturned();
    void destroyed_rightAfterRequest_data();
    void destroyed_rightAfterRequest();
    void surface_destroyedWhileStreaming();
    void process_endsInOrder_data();
    void process_endsInOrder();

private:
    void addStatuses();
};

namespace {

constexpr int Deadline = 20000; // milliseconds

struct Preview
{
    Preview()
        : camera(std::make_unique<QCamera>(QByteArray("pattern:back")))
    {
        camera->setViewfinder(&surface);
    }
    PictureSurface surface; // outlives the camera
    std::unique_ptr<QCamera> camera;
};

/*!
 * Sends the camera up to streaming and down again, and calls \a reached in the first slot that
 * hears of \a status.
 */
template <typename Function>
void walkTo(QCamera *camera, QCamera::Status status, Function reached)
{
    auto met = std::make_shared<bool>(false);
    QObject::connect(camera, &QCamera::statusChanged, camera, [=](QCamera::Status now) {
        if (*met)
            return;
        if (now == status) {
            *met = true;
            reached();
        } else if (now == QCamera::ActiveStatus) {
            camera->stop();
        } else if (now == QCamera::StandbyStatus) {
            camera->unload();
        }
    });
    camera->start();
}

} // namespace

void TestCameraLifetime::addStatuses()
{
    QTest::addColumn<QCamera::Status>("status");
    const QCamera::Status statuses[] = { QCamera::LoadingStatus,   QCamera::LoadedStatus,
                                         QCamera::StartingStatus,  QCamera::ActiveStatus,
                                         QCamera::StoppingStatus,  QCamera::StandbyStatus,
                                         QCamera::UnloadingStatus, QCamera::UnloadedStatus };
    const QMetaObject &camera = QCamera::staticMetaObject;
    const QMetaEnum names = camera.enumerator(camera.indexOfEnumerator("Status"));
    for (const QCamera::Status status : statuses)
        QTest::newRow(names.valueToKey(status)) << status;
}

void TestCameraLifetime::destroyed_inEveryStatus_withEventLoopRunning()
{
    QFETCH(QCamera::Status, status);
    Preview preview;
    QPointer<QCamera> camera = preview.camera.get();
    QEventLoop loop;
    walkTo(camera, status, [&preview] { preview.camera.release()->deleteLater(); });
    connect(camera, &QObject::destroyed, &loop, [&loop] { loop.exit(0); });
    bool late = false; // a timer also wakes an event loop that has gone to sleep for good
    QTimer::singleShot(Deadline, &loop, [&] {
        late = true;
        loop.exit(1);
    });
    QCOMPARE(loop.exec(), 0);
    QVERIFY(!late);
    QVERIFY(camera.isNull());
    QVERIFY(!preview.surface.isActive());

    // Nothing comes after it: a picture that was on its way has no surface to go to.
    const int pictures = preview.surface.pictures.size();
    QCoreApplication::processEvents();
    QCOMPARE(preview.surface.pictures.size(), pictures);
}

void TestCameraLifetime::destroyed_inEveryStatus_afterExecReturned()
{
    QFETCH(QCamera::Status, status);
    Preview preview;
    walkTo(preview.camera.get(), status, [] { QCoreApplication::exit(0); });
    QTimer::singleShot(Deadline, &preview.surface, [] { QCoreApplication::exit(1); });
    QCOMPARE(QCoreApplication::exec(), 0);
    preview.camera.reset();
    QVERIFY(!preview.surface.isActive());
    QCoreApplication::sendPostedEvents();
}

void TestCameraLifetime::destroyed_rightAfterRequest_data()
{
    QTest::addColumn<bool>("hasRun");
    QTest::addColumn<QCamera::State>("state");
    QTest::newRow("nothing") << false << QCamera::UnloadedState;
    QTest::newRow("load") << false << QCamera::LoadedState;
    QTest::newRow("start") << false << QCamera::ActiveState;
    QTest::newRow("stop") << true << QCamera::LoadedState;
    QTest::newRow("unload") << true << QCamera::UnloadedState;
}

void TestCameraLifetime::destroyed_rightAfterRequest()
{
    QFETCH(bool, hasRun);
    QFETCH(QCamera::State, state);
    for (int i = 0; i < 10; ++i) {
        Preview preview;
        if (hasRun) {
            preview.camera->start();
            QTRY_VERIFY(!preview.surface.pictures.isEmpty());
        }
        if (state == QCamera::ActiveState)
            preview.camera->start();
        else if (state == QCamera::LoadedState)
            hasRun ? preview.camera->stop() : preview.camera->load();
        else
            preview.camera->unload();
        preview.camera.reset();
        QVERIFY(!preview.surface.isActive());
    }
}

void TestCameraLifetime::surface_destroyedWhileStreaming()
{
    QCamera camera(QByteArray("pattern:back"));
    auto surface = std::make_unique<PictureSurface>();
    camera.setViewfinder(surface.get());
    camera.start();
    QTRY_VERIFY(surface->pictures.size() >= 3);
    surface.reset();
    QCOMPARE(camera.status(), QCamera::ActiveStatus);

    PictureSurface next;
    camera.setViewfinder(&next);
    QTRY_VERIFY(next.pictures.size() >= 3);
    camera.setViewfinder(static_cast<QAbstractVideoSurface *>(nullptr));
}

void TestCameraLifetime::process_endsInOrder_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("camera destroyed after exec() returned") << QStringLiteral("after-exec");
    QTest::newRow("camera never destroyed") << QStringLiteral("never");
    QTest::newRow("exit() while streaming") << QStringLiteral("std-exit");
    QTest::newRow("camera in a static object") << QStringLiteral("static");
}

void TestCameraLifetime::process_endsInOrder()
{
    QFETCH(QString, way);
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral(OCELLE_CAMERA_EXIT), { way });
    const bool finished = process.waitForFinished(30000);
    const QByteArray said = process.readAll();
    QVERIFY2(finished, said.constData());
    QVERIFY2(process.exitStatus() == QProcess::NormalExit, said.constData());
    QVERIFY2(process.exitCode() == 0, said.constData());
}

QTEST_GUILESS_MAIN(TestCameraLifetime)
#include "tst_cameralifetime.moc"
