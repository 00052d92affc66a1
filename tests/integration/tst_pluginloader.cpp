// SPDX-License-Identifier: BSD-3-Clause
#include "picturesurface.h"

#include <QCameraControl>
#include <QMediaService>
#include <QMediaServiceProviderPlugin>
#include <QPluginLoader>
#include <QTest>
#include <QVideoDeviceSelectorControl>
#include <QVideoRendererControl>

/*! The back end's plugin, loaded and used as an application does that asks for it by its own key. */
class TestPluginLoader : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void devices_areThePatternCameras();
    void cameraService_streamsPictures_untilStopped();
    void cameraServices_streamSideBySide();

private:
    QMediaService *createCamera() const
    {
        return m_plugin->create(QStringLiteral("veltra.palaver.camera"));
    }

    QPluginLoader m_loader;
    QMediaServiceProviderPlugin *m_plugin = nullptr;
};

namespace {

template <typename Control>
Control *control(QMediaService *service)
{
    return service->requestControl<Control *>();
}

void selectCamera(QMediaService *service, const QString &name)
{
    auto *const selector = control<QVideoDeviceSelectorControl>(service);
    QVERIFY(selector);
    for (int i = 0; i < selector->deviceCount(); ++i) {
        if (selector->deviceName(i) == name)
            selector->setSelectedDevice(i);
    }
    QCOMPARE(selector->deviceName(selector->selectedDevice()), name);
}

} // namespace

void TestPluginLoader::initTestCase()
{
    m_loader.setFileName(QStringLiteral(OCELLE_BACKEND));
    m_plugin = qobject_cast<QMediaServiceProviderPlugin *>(m_loader.instance());
    QVERIFY2(m_plugin, qPrintable(m_loader.errorString()));
}

void TestPluginLoader::cleanupTestCase()
{
    m_loader.unload();
}

void TestPluginLoader::devices_areThePatternCameras()
{
    auto *const devices = qobject_cast<QMediaServiceSupportedDevicesInterface *>(m_plugin);
    QVERIFY(devices);
    QCOMPARE(devices->devices("veltra.palaver.camera"),
             (QList<QByteArray> { "pattern:back", "pattern:front" }));
}

void TestPluginLoader::cameraService_streamsPictures_untilStopped()
{
    PictureSurface surface;
    QMediaService *const service = createCamera();
    QVERIFY(service);
    selectCamera(service, QStringLiteral("pattern:back"));
    control<QVideoRendererControl>(service)->setSurface(&surface);
    auto *const camera = control<QCameraControl>(service);

    camera->setState(QCamera::ActiveState);
    QTRY_VERIFY(surface.pictures.size() >= 10);
    QCOMPARE(camera->status(), QCamera::ActiveStatus);
    camera->setState(QCamera::UnloadedState);
    QTRY_COMPARE(camera->status(), QCamera::UnloadedStatus);

    QTRY_VERIFY(!surface.isActive()); // the status is known before it is acted on
    QVERIFY(surface.pictures.first().sequence);
    QVERIFY(surface.sequenceRises());
    QCOMPARE(surface.strays, 0);
    m_plugin->release(service);
}

void TestPluginLoader::cameraServices_streamSideBySide()
{
    PictureSurface surfaces[2];
    QMediaService *const services[] = { createCamera(), createCamera() };
    const QString names[] = { QStringLiteral("pattern:back"), QStringLiteral("pattern:front") };
    for (int i = 0; i < 2; ++i) {
        selectCamera(services[i], names[i]);
        control<QVideoRendererControl>(services[i])->setSurface(&surfaces[i]);
        control<QCameraControl>(services[i])->setState(QCamera::ActiveState);
    }
    QTRY_VERIFY(surfaces[0].pictures.size() >= 5 && surfaces[1].pictures.size() >= 5);

    m_plugin->release(services[0]);
    const int soFar = surfaces[1].pictures.size();
    QTRY_VERIFY(surfaces[1].pictures.size() >= soFar + 5);
    QVERIFY(surfaces[1].sequenceRises());
    m_plugin->release(services[1]);
}

QTEST_GUILESS_MAIN(TestPluginLoader)
#include "tst_pluginloader.moc"
