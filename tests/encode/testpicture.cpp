// SPDX-License-Identifier: BSD-3-Clause
#include "testpicture.h"

#include <cstring>
#include <utility>

namespace {

int bytesOf(QVideoFrame::PixelFormat format, const QSize &size, int bytesPerLine)
{
    switch (format) {
    case QVideoFrame::Format_YUV420P:
    case QVideoFrame::Format_NV12:
    case QVideoFrame::Format_NV21:
        return bytesPerLine * size.height() +
               2 * ((bytesPerLine + 1) / 2) * ((size.height() + 1) / 2);
    default:
        return bytesPerLine * size.height();
    }
}

bool isPacked(QVideoFrame::PixelFormat format)
{
    return format == QVideoFrame::Format_RGB32 || format == QVideoFrame::Format_BGRA32;
}

} // namespace

QVideoFrame testPicture(qint64 time, QVideoFrame::PixelFormat format, const QSize &size, int fill)
{
    const int bytesPerLine = isPacked(format) ? 4 * size.width() : size.width();
    QVideoFrame frame(bytesOf(format, size, bytesPerLine), size, bytesPerLine, format);
    if (frame.map(QAbstractVideoBuffer::WriteOnly)) {
        std::memset(frame.bits(0), fill, static_cast<std::size_t>(frame.mappedBytes()));
        frame.unmap();
    }
    frame.setStartTime(time);
    return frame;
}

TrackedBuffer::TrackedBuffer(std::shared_ptr<BufferTrack> track, int bytes, int bytesPerLine)
    : QAbstractVideoBuffer(NoHandle)
    , m_track(std::move(track))
    , m_memory(bytes, 0)
    , m_bytesPerLine(bytesPerLine)
{
    ++m_track->buffers;
}

TrackedBuffer::~TrackedBuffer()
{
    --m_track->buffers;
}

QAbstractVideoBuffer::MapMode TrackedBuffer::mapMode() const
{
    return m_mapMode;
}

uchar *TrackedBuffer::map(MapMode mode, int *bytes, int *bytesPerLine)
{
    ++m_track->maps;
    if (mapFails)
        return nullptr;
    m_mapMode = mode;
    *bytes = m_memory.size();
    *bytesPerLine = m_bytesPerLine;
    return reinterpret_cast<uchar *>(m_memory.data());
}

void TrackedBuffer::unmap()
{
    ++m_track->unmaps;
    m_mapMode = NotMapped;
}

QVideoFrame trackedPicture(const std::shared_ptr<BufferTrack> &track, qint64 time)
{
    QVideoFrame frame(new TrackedBuffer(track, 64 * 48 * 3 / 2, 64), QSize(64, 48),
                      QVideoFrame::Format_NV12);
    frame.setStartTime(time);
    return frame;
}
