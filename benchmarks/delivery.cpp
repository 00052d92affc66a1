// SPDX-License-Identifier: BSD-3-Clause
// Delivers pictures from a camera's thread to a video surface, for an instruction counter to watch.
//
//   backend   through the camera service and the platform's video output
//   two       the same, to the raw video sink's surface as well
//   busy      the same as backend, while the application thread does not look
//   output    to the platform's video output alone, while the application thread does not look
//   floor     the least that any Qt program has to do: a mutex, a slot, an event, a QVideoFrame
//   copy      as floor, with a copy of the picture: what a path that copies costs
//   nobody    to a listener that drops them: the camera alone

#include "countingsurface.h"
#include "floorlistener.h"
#include "ocelleprovider.h"
#include "readycameramanager.h"

#include <QCamera>
#include <QCameraControl>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QMediaService>
#include <QVideoRendererControl>

#include <ocelle/videooutputqt5.h>
#include <palaver/qpvrawvideosourcecontrol.h>

#include <cstdio>
#include <utility>

namespace {

class NoCodecs : public Veltra::Ocelle::CodecManager
{
public:
    bool prepare() override { return true; }
    bool isEncoderSupported(Veltra::Ocelle::CodecType, bool) override { return false; }
    bool isDecoderSupported(Veltra::Ocelle::CodecType, bool) override { return false; }
    std::shared_ptr<Veltra::Ocelle::VideoEncoder> createVideoEncoder(Veltra::Ocelle::CodecType,
                                                                     int) override
    {
        return {};
    }
    std::shared_ptr<Veltra::Ocelle::VideoDecoder> createVideoDecoder(Veltra::Ocelle::CodecType,
                                                                     int) override
    {
        return {};
    }
    std::vector<Veltra::Ocelle::VideoCodecInfo> getVideoCodecs() override { return {}; }
};

class Nobody : public Veltra::Ocelle::CameraListener
{
public:
    void onCameraFrame(std::shared_ptr<Veltra::Ocelle::GraphicBuffer>) override {}
    void onCameraError(const std::string &) override {}
    void onCameraParameterChanged(Veltra::Ocelle::CameraParameter, const std::string &) override {}
};

/*! Hands pictures straight to an output. */
class OutputListener : public Nobody
{
public:
    explicit OutputListener(Veltra::Ocelle::VideoOutputQt5 *output)
        : m_output(output)
    {
    }
    void onCameraFrame(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer) override
    {
        m_output->onGraphicBuffer(std::move(buffer));
    }

private:
    Veltra::Ocelle::VideoOutputQt5 *const m_output; // not owned
};

struct Run
{
    QString path;
    QSize size;
    quint64 pictures;
};

/*! Waits in the event loop until \a condition holds. */
template <typename Condition>
void serveUntil(Condition condition)
{
    while (!condition())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

quint64 runBackend(const Run &run)
{
    const bool two = run.path == QLatin1String("two");
    const bool busy = run.path == QLatin1String("busy");
    ReadyCameraManager cameras(run.size.width(), run.size.height(), run.pictures);
    NoCodecs codecs;
    OcelleProvider provider(&cameras, &codecs);
    QMediaService *const service = provider.create(QStringLiteral("veltra.palaver.camera"));

    // The camera goes on when every surface has had its picture.
    quint64 waiting = two ? 2 : 1;
    const quint64 surfaces = waiting;
    const auto presented = [&] {
        if (--waiting > 0 || busy)
            return;
        waiting = surfaces;
        cameras.camera()->proceed();
    };
    CountingSurface surface(presented);
    CountingSurface second(presented);
    service->requestControl<QVideoRendererControl *>()->setSurface(&surface);
    if (two)
        service->requestControl<QPVRawVideoSourceControl *>()->setSurface(&second);
    auto *const control = service->requestControl<QCameraControl *>();
    control->setState(QCamera::ActiveState);
    serveUntil([&] { return control->status() == QCamera::ActiveStatus; });
    QCoreApplication::processEvents();
    if (busy) {
        cameras.camera()->proceed(run.pictures);
        cameras.camera()->waitUntilDone();
    } else {
        cameras.camera()->proceed();
        serveUntil([&] { return surface.pictures() >= run.pictures; });
    }
    const quint64 delivered = busy ? run.pictures : surface.pictures();
    provider.release(service);
    return delivered;
}

quint64 runFloor(const Run &run)
{
    ReadyCamera camera(run.size.width(), run.size.height(), run.pictures);
    CountingSurface surface([&] { camera.proceed(); });
    FloorListener listener(&surface, run.path == QLatin1String("copy"));
    camera.setListener(&listener);
    camera.startCapture({ run.size.width(), run.size.height(), 30 }, 255);
    camera.proceed();
    serveUntil([&] { return surface.pictures() >= run.pictures; });
    camera.stopCapture();
    return surface.pictures();
}

/*! Everybody else waits meanwhile. */
quint64 runAlone(const Run &run, Veltra::Ocelle::CameraListener *listener)
{
    ReadyCamera camera(run.size.width(), run.size.height(), run.pictures);
    camera.setListener(listener);
    camera.startCapture({ run.size.width(), run.size.height(), 30 }, 255);
    camera.proceed(run.pictures);
    camera.waitUntilDone();
    return run.pictures;
}

quint64 runNobody(const Run &run)
{
    Nobody listener;
    return runAlone(run, &listener);
}

quint64 runOutput(const Run &run)
{
    CountingSurface surface([] {});
    Veltra::Ocelle::VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    OutputListener listener(&output);
    return runAlone(run, &listener);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addPositionalArgument(
            QStringLiteral("path"),
            QStringLiteral("backend, two, busy, output, floor, copy or nobody"));
    parser.addPositionalArgument(QStringLiteral("size"), QStringLiteral("WxH"));
    parser.addPositionalArgument(QStringLiteral("pictures"), QStringLiteral("how many"));
    parser.process(application);
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 3)
        parser.showHelp(2);
    const QStringList size = arguments[1].split(QLatin1Char('x'));
    const Run run { arguments[0], QSize(size.value(0).toInt(), size.value(1).toInt()),
                    arguments[2].toULongLong() };
    if (run.size.isEmpty() || run.pictures == 0)
        parser.showHelp(2);

    quint64 pictures = 0;
    if (run.path == QLatin1String("backend") || run.path == QLatin1String("two") ||
        run.path == QLatin1String("busy"))
        pictures = runBackend(run);
    else if (run.path == QLatin1String("floor") || run.path == QLatin1String("copy"))
        pictures = runFloor(run);
    else if (run.path == QLatin1String("output"))
        pictures = runOutput(run);
    else if (run.path == QLatin1String("nobody"))
        pictures = runNobody(run);
    else
        parser.showHelp(2);
    std::printf("%llu\n", pictures);
    return pictures == run.pictures ? 0 : 1;
}
