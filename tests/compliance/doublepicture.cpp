// SPDX-License-Identifier: BSD-3-Clause
#include "doublepicture.h"

#include <QAbstractVideoSurface>
#include <QCoreApplication>
#include <QEvent>
#include <QVideoSurfaceFormat>

#include <ocelle/videooutputqt5.h>

#include <cstring>
#include <memory>
#include <utility>

namespace Veltra {
namespace Ocelle {

GraphicBuffer::GraphicBuffer(int pictureWidth, int pictureHeight)
    : width(pictureWidth)
    , height(pictureHeight)
    , planes(lumaSize() * 3 / 2, 128)
{
}

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

class PictureEvent : public QEvent
{
public:
    explicit PictureEvent(std::shared_ptr<GraphicBuffer> picture)
        : QEvent(QEvent::User)
        , buffer(std::move(picture))
    {
    }

    const std::shared_ptr<GraphicBuffer> buffer;
};

/*! Takes pictures to the surface's thread, on which it lives. */
class Presenter : public QObject
{
public:
    explicit Presenter(QAbstractVideoSurface *surface)
        : m_surface(surface)
    {
    }

    QAbstractVideoSurface *surface() const { return m_surface; }

protected:
    void customEvent(QEvent *event) override
    {
        present(m_surface, *static_cast<PictureEvent *>(event)->buffer);
    }

private:
    QAbstractVideoSurface *const m_surface;
};

} // namespace

class VideoOutputQt5Private
{
public:
    std::unique_ptr<Presenter> presenter;
};

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
    return m_d->presenter ? m_d->presenter->surface() : nullptr;
}

void VideoOutputQt5::setVideoSurface(QAbstractVideoSurface *surface)
{
    m_d->presenter.reset(surface ? new Presenter(surface) : nullptr);
}

void VideoOutputQt5::setViewport(QRect) {}
void VideoOutputQt5::setMirrored(bool) {}
void VideoOutputQt5::stop() {}
void VideoOutputQt5::onVideoFrame(const YCbCrFrame *) {}

void VideoOutputQt5::onGraphicBuffer(std::shared_ptr<GraphicBuffer> buffer)
{
    if (m_d->presenter)
        QCoreApplication::postEvent(m_d->presenter.get(), new PictureEvent(std::move(buffer)));
}

} // namespace Ocelle
} // namespace Veltra
