// SPDX-License-Identifier: BSD-3-Clause
#include "doublepicture.h"

#include <QAbstractVideoSurface>
#include <QPointer>
#include <QVideoSurfaceFormat>

#include <ocelle/videooutputqt5.h>

#include <cstring>
#include <memory>

namespace Veltra {
namespace Ocelle {

GraphicBuffer::GraphicBuffer(int pictureWidth, int pictureHeight)
    : width(pictureWidth)
    , height(pictureHeight)
    , planes(lumaSize() * 3 / 2, 128)
{
}

class VideoOutputQt5Private
{
public:
    QPointer<QAbstractVideoSurface> surface;
};

namespace {

void present(QAbstractVideoSurface *surface, const GraphicBuffer &buffer)
{
    const QSize size(buffer.width, buffer.height);
    QVideoFrame frame(int(buffer.planes.size()), size, buffer.width, QVideoFrame::Format_YUV420P);
    if (frame.map(QAbstractVideoBuffer::WriteOnly)) {
        std::memcpy(frame.bits(), buffer.planes.data(), buffer.planes.size());
        frame.unmap();
    }
    frame.setStartTime(buffer.timestamp);
    if (surface->isActive() && surface->surfaceFormat().frameSize() != size)
        surface->stop();
    if (surface->isActive() ||
        surface->start(QVideoSurfaceFormat(size, QVideoFrame::Format_YUV420P)))
        surface->present(frame);
}

} // namespace

VideoOutputQt5::VideoOutputQt5(QObject *parent)
    : QObject(parent)
    , m_d(new VideoOutputQt5Private)
{
}

VideoOutputQt5::~VideoOutputQt5()
{
    delete m_d;
}

QAbstractVideoSurface *VideoOutputQt5::videoSurface() const
{
    return m_d->surface;
}

void VideoOutputQt5::setVideoSurface(QAbstractVideoSurface *surface)
{
    m_d->surface = surface;
}

void VideoOutputQt5::setViewport(QRect) {}
void VideoOutputQt5::setMirrored(bool) {}
void VideoOutputQt5::stop() {}
void VideoOutputQt5::onVideoFrame(const YCbCrFrame *) {}

void VideoOutputQt5::onGraphicBuffer(std::shared_ptr<GraphicBuffer> buffer)
{
    QAbstractVideoSurface *const surface = m_d->surface;
    QMetaObject::invokeMethod(
            surface, [surface, buffer] { present(surface, *buffer); }, Qt::QueuedConnection);
}

} // namespace Ocelle
} // namespace Veltra
