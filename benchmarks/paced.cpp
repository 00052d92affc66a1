// SPDX-License-Identifier: BSD-3-Clause
// Ready pictures, 30 a second, from a camera's thread to a video surface through the camera service
// and the platform's video output. With --floor by the least that any Qt program has to do instead,
// with --source the camera alone.
// Prints CPU time per picture, pictures per second, and how long the first picture took.
//
// usage: bench-paced PICTURES [--floor | --source]

#include "countingsurface.h"
#include "floorlistener.h"
#include "ocelleprovider.h"
#include "previewmeter.h"
#include "readycameramanager.h"

#include <QCamera>
#include <QCameraControl>
#include <QGuiApplication>
#include <QMediaService>
#include <QVideoRendererControl>

#include <limits>

namespace {

constexpr std::uint64_t Endless = std::numeric_limits<std::uint64_t>::max();

class CountingListener : public Veltra::Ocelle::CameraListener
{
public:
    explicit CountingListener(PreviewMeter &meter)
        : m_meter(meter)
    {
    }
    void onCameraFrame(std::shared_ptr<Veltra::Ocelle::GraphicBuffer>) override { m_meter.count(); }
    void onCameraError(const std::string &) override {}
    void onCameraParameterChanged(Veltra::Ocelle::CameraParameter, const std::string &) override {}

private:
    PreviewMeter &m_meter; // on the camera's thread; quits the event loop, which any thread may
};

bool runCamera(PreviewMeter &meter, Veltra::Ocelle::CameraListener &listener)
{
    ReadyCamera camera(640, 480, Endless, ReadyCamera::Paced);
    camera.setListener(&listener);
    meter.start();
    camera.startCapture({ 640, 480, 30 }, 255);
    const bool measured = meter.run();
    camera.stopCapture();
    return measured;
}

bool runAlone(PreviewMeter &meter)
{
    CountingListener listener(meter);
    return runCamera(meter, listener);
}

bool runFloor(PreviewMeter &meter)
{
    CountingSurface surface([&] { meter.count(); });
    FloorListener listener(&surface, false);
    return runCamera(meter, listener);
}

bool runService(PreviewMeter &meter)
{
    ReadyCameraManager cameras(640, 480, Endless, ReadyCamera::Paced);
    OcelleProvider provider(&cameras, OcelleCodecManager());
    QMediaService *const service = provider.create(QStringLiteral("veltra.palaver.camera"));
    CountingSurface surface([&] { meter.count(); });
    service->requestControl<QVideoRendererControl *>()->setSurface(&surface);
    meter.start();
    service->requestControl<QCameraControl *>()->setState(QCamera::ActiveState);
    const bool measured = meter.run();
    provider.release(service);
    return measured;
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    PreviewMeter meter(arguments.value(1).toULongLong());
    const QString path = arguments.value(2);
    bool measured = false;
    if (path == QLatin1String("--floor"))
        measured = runFloor(meter);
    else if (path == QLatin1String("--source"))
        measured = runAlone(meter);
    else
        measured = runService(meter);
    if (!measured)
        return 1;
    meter.print();
    return 0;
}
