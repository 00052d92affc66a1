// SPDX-License-Identifier: BSD-3-Clause
#include "vmtest.h"

#include "udevvideonodes.h"

#include <QFile>
#include <QtTest>

#include <filesystem>

using namespace Veltra::Ocelle;

const std::string FirstId = "v4l2:platform-vivid.0:vivid-000-vid-cap";
const std::string SecondId = "v4l2:platform-vivid.0:vivid-001-vid-cap";

bool isInVm()
{
    if (!VividDevice::nodeOf(0).empty())
        return true;
    qWarning("this runs inside the virtual machine only");
    return false;
}

void makeReady()
{
    QTRY_COMPARE(openVideoNodes(), 0);
    QCOMPARE(mappedVideoNodes(), 0);
    if (VividDevice::nodeOf(0).empty())
        QVERIFY(VividDevice::plug());
    // Until then udev may tell of the camera that went, and take that back.
    QVERIFY(VividDevice::settle());
    QTRY_VERIFY_WITH_TIMEOUT(idsOf(*makeSource()).size() == 2, 30000);
}

std::unique_ptr<V4l2Source> makeSource(const std::function<void()> &changed)
{
    auto source = std::make_unique<V4l2Source>(std::make_shared<KernelV4l2System>(),
                                               std::make_unique<UdevVideoNodes>());
    source->watch(changed ? changed : [] {});
    return source;
}

QStringList idsOf(V4l2Source &source)
{
    QStringList ids;
    for (const CameraDescription &camera : source.cameras())
        ids.append(QString::fromStdString(camera.info.id));
    return ids;
}

int openVideoNodes()
{
    int count = 0;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const std::string target = std::filesystem::read_symlink(entry, error).string();
        count += target.rfind("/dev/video", 0) == 0;
    }
    return count;
}

int mappedVideoNodes()
{
    QFile maps("/proc/self/maps");
    return maps.open(QIODevice::ReadOnly) ? maps.readAll().count("/dev/video") : -1;
}

Bytes planar(const GraphicBuffer &picture)
{
    Bytes all;
    const int chromaWidth = (picture.width + 1) / 2;
    const int chromaHeight = (picture.height + 1) / 2;
    const auto sample = [&](int plane, int line, int at) {
        const GraphicBuffer::Plane &from = picture.planes[std::size_t(plane)];
        return from.data[std::ptrdiff_t(line) * from.stride + at];
    };
    for (int line = 0; line < picture.height; ++line) {
        for (int x = 0; x < picture.width; ++x)
            all.push_back(sample(0, line, x));
    }
    const bool isPlanar = picture.format == PixelFormat::YU12;
    const int first = picture.format == PixelFormat::NV21 ? 1 : 0;
    for (int plane = 0; plane < 2; ++plane) {
        for (int line = 0; line < chromaHeight; ++line) {
            for (int x = 0; x < chromaWidth; ++x)
                all.push_back(isPlanar ? sample(1 + plane, line, x)
                                       : sample(1, line, 2 * x + (plane ^ first)));
        }
    }
    return all;
}
