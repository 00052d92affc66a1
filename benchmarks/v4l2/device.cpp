// Previews a V4L2 camera through Qt's own QCamera, the bridge and the plugin, and tells what that took:
// CPU time per picture in microseconds, pictures per second, milliseconds to the first picture.

#include "countingsurface.h"
#include "previewmeter.h"

#include <QCamera>
#include <QCameraInfo>
#include <QGuiApplication>

#include <cstdio>

namespace {

QCameraViewfinderSettings settingsFor(const QStringList &size, double rate)
{
    QCameraViewfinderSettings settings;
    settings.setResolution(size.value(0).toInt(), size.value(1).toInt());
    settings.setMinimumFrameRate(rate);
    settings.setMaximumFrameRate(rate);
    return settings;
}

QByteArray firstDevice()
{
    for (const QCameraInfo &camera : QCameraInfo::availableCameras()) {
        if (camera.deviceName().startsWith(QLatin1String("v4l2:")))
            return camera.deviceName().toUtf8();
    }
    return {};
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    const bool isCopied = arguments.value(4) == QLatin1String("copy");
    if (arguments.size() != (isCopied ? 5 : 4)) {
        std::fprintf(stderr, "usage: bench-device WIDTHxHEIGHT RATE PICTURES [copy]\n");
        return 2;
    }
    const QByteArray device = firstDevice();
    if (device.isEmpty()) {
        std::fprintf(stderr, "there is no V4L2 camera\n");
        return 1;
    }
    PreviewMeter meter(arguments[3].toULongLong());
    std::unique_ptr<QVideoProbe> probe;
    QByteArray copy;
    CountingSurface surface([&] { meter.count(); });
    QCamera camera(device);
    camera.setViewfinderSettings(settingsFor(arguments[1].split('x'), arguments[2].toDouble()));
    camera.setViewfinder(&surface);
    meter.start();
    camera.start();
    const bool measured = meter.run();
    camera.stop();
    camera.unload();
    if (!measured) {
        std::fprintf(stderr, "%s\n", qPrintable(camera.errorString()));
        return 1;
    }
    meter.print();
    return 0;
}
