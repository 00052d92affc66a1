// SPDX-License-Identifier: BSD-3-Clause
#include "pictureviewer.h"

#include <QVideoSurfaceFormat>

#include <utility>

namespace Compliance {
namespace {

// What is to be seen of a mapped picture of one of the formats that the viewer takes.
SeenPicture lookAtMapped(const QVideoFrame &frame, const QRect &viewport)
{
    if (frame.pixelFormat() == QVideoFrame::Format_RGB32)
        return lookAtRgb32(frame.bits(0), frame.bytesPerLine(0), frame.size(), viewport);
    Planes planes;
    planes.y = frame.bits(0);
    planes.yStride = frame.bytesPerLine(0);
    planes.cStride = frame.bytesPerLine(1);
    const bool isPlanar = frame.planeCount() == 3;
    if (isPlanar || frame.planeCount() == 2) {
        planes.cb = frame.bits(1);
        planes.cr = isPlanar ? frame.bits(2) : planes.cb + 1;
        planes.chromaStep = isPlanar ? 1 : 2;
    }
    if (frame.pixelFormat() == QVideoFrame::Format_YV12 ||
        frame.pixelFormat() == QVideoFrame::Format_NV21)
        std::swap(planes.cb, planes.cr);
    return lookAt(planes, frame.size(), viewport);
}

} // namespace

PictureViewer::PictureViewer(std::function<void()> onSeen)
    : m_onSeen(std::move(onSeen))
{
    m_output.setVideoSurface(this);
}

PictureViewer::~PictureViewer()
{
    m_output.stop();
    m_output.setVideoSurface(nullptr);
}

void PictureViewer::show(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer)
{
    m_output.onGraphicBuffer(std::move(buffer));
}

void PictureViewer::setViewport(const QRect &viewport)
{
    m_output.setViewport(viewport);
}

std::vector<SeenPicture> PictureViewer::seen() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_seen;
}

int PictureViewer::count() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return int(m_seen.size());
}

void PictureViewer::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_seen.clear();
}

QList<QVideoFrame::PixelFormat>
PictureViewer::supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const
{
    if (type != QAbstractVideoBuffer::NoHandle)
        return {};
    return { QVideoFrame::Format_NV12, QVideoFrame::Format_YUV420P, QVideoFrame::Format_YV12,
             QVideoFrame::Format_NV21, QVideoFrame::Format_RGB32 };
}

bool PictureViewer::present(const QVideoFrame &frame)
{
    const QRect viewport = surfaceFormat().viewport();
    SeenPicture picture = lookAt(Planes(), frame.size(), viewport); // no more than its size
    QVideoFrame mapped(frame);
    if (mapped.map(QAbstractVideoBuffer::ReadOnly)) {
        picture = lookAtMapped(mapped, viewport);
        mapped.unmap();
    }
    picture.timestamp = frame.startTime();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_seen.push_back(picture);
    }
    m_onSeen();
    return true;
}

} // namespace Compliance
