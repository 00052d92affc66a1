// SPDX-License-Identifier: BSD-3-Clause
#include "floorlistener.h"

#include <QAbstractPlanarVideoBuffer>
#include <QAbstractVideoSurface>
#include <QCoreApplication>
#include <QEvent>
#include <QVideoSurfaceFormat>

#include <cstring>
#include <utility>

using Veltra::Ocelle::GraphicBuffer;

namespace {

class FloorBuffer : public QAbstractPlanarVideoBuffer
{
public:
    explicit FloorBuffer(std::shared_ptr<GraphicBuffer> buffer)
        : QAbstractPlanarVideoBuffer(NoHandle)
        , m_buffer(std::move(buffer))
    {
    }

    MapMode mapMode() const override { return m_mapMode; }
    int map(MapMode mode, int *numBytes, int bytesPerLine[4], uchar *data[4]) override
    {
        m_mapMode = mode;
        *numBytes = 0;
        for (int i = 0; i < m_buffer->planeCount; ++i) {
            const GraphicBuffer::Plane &plane = m_buffer->planes[std::size_t(i)];
            bytesPerLine[i] = plane.stride;
            data[i] = const_cast<uchar *>(plane.data);
            *numBytes += plane.stride * plane.lines;
        }
        return m_buffer->planeCount;
    }
    void unmap() override { m_mapMode = NotMapped; }

private:
    const std::shared_ptr<GraphicBuffer> m_buffer;
    MapMode m_mapMode = NotMapped;
};

QVideoFrame copyOf(const GraphicBuffer &buffer)
{
    const int bytes = buffer.width * buffer.height * 3 / 2;
    QVideoFrame frame(bytes, QSize(buffer.width, buffer.height), buffer.width,
                      QVideoFrame::Format_NV12);
    frame.map(QAbstractVideoBuffer::WriteOnly);
    std::memcpy(frame.bits(), buffer.planes[0].data, std::size_t(bytes));
    frame.unmap();
    return frame;
}

} // namespace

FloorListener::FloorListener(QAbstractVideoSurface *surface, bool copy)
    : m_surface(surface)
    , m_copy(copy)
{
}

void FloorListener::onCameraFrame(std::shared_ptr<GraphicBuffer> buffer)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_buffer = std::move(buffer);
    }
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

void FloorListener::onCameraError(const std::string &) {}

void FloorListener::onCameraParameterChanged(Veltra::Ocelle::CameraParameter, const std::string &)
{
}

void FloorListener::customEvent(QEvent *)
{
    std::shared_ptr<GraphicBuffer> buffer;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        buffer.swap(m_buffer);
    }
    if (!m_surface->isActive())
        m_surface->start(QVideoSurfaceFormat(QSize(buffer->width, buffer->height),
                                             QVideoFrame::Format_NV12));
    if (m_copy) {
        m_surface->present(copyOf(*buffer));
        return;
    }
    const QSize size(buffer->width, buffer->height);
    m_surface->present(
            QVideoFrame(new FloorBuffer(std::move(buffer)), size, QVideoFrame::Format_NV12));
}
