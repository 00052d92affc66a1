// SPDX-License-Identifier: BSD-3-Clause
// Previews a V4L2 camera through Qt's own QCamera, the bridge and the plugin, and tells what that took:
// CPU time per picture in microseconds, pictures per second, milliseconds to the first picture.

#include "countingsurface.h"
#include "previewmeter.h"

#include <QCamera>
#include <QCameraInfo>
#include <QGuiApplication>

#include <cstdio>
#include <cstring>
#include <functional>
#include <utility>
#include <vector>

namespace {

QCameraViewfinderSettings settingsFor(const QStringList &size, double rate)
{
    QCameraViewfinderSettings settings;
    settings.setResolution(size.value(0).toInt(), size.value(1).toInt());
    settings.setMinimumFrameRate(rate);
    settings.setMaximumFrameRate(rate);
    return settings;
}

/*! The yardstick copies each picture as it comes. */
class DeviceSurface : public CountingSurface
{
public:
    DeviceSurface(std::function<void()> presented, bool isCopying)
        : CountingSurface(std::move(presented))
        , m_isCopying(isCopying)
    {
    }
    bool present(const QVideoFrame &frame) override
    {
        QVideoFrame mapped(frame);
        if (m_isCopying && mapped.map(QAbstractVideoBuffer::ReadOnly)) {
            m_copy.resize(std::size_t(mapped.mappedBytes()));
            std::memcpy(m_copy.data(), mapped.bits(), m_copy.size());
            mapped.unmap();
        }
        return CountingSurface::present(frame);
    }

private:
    const bool m_isCopying;
    std::vector<unsigned char> m_copy;
};

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
    DeviceSurface surface([&] { meter.count(); }, isCopied);
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
