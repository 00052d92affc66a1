// SPDX-License-Identifier: BSD-3-Clause
#include "pictureviewer.h"

#include <QVideoSurfaceFormat>

#include <utility>

namespace Compliance {
namespace {

using Veltra::Ocelle::readPattern;
using Veltra::Ocelle::readPatternRgb32;

QRect visiblePart(const QSize &size, const QRect &viewport)
{
    const QRect whole(QPoint(), size);
    const QRect part = viewport & whole;
    return part.isEmpty() ? whole : part;
}

} // namespace

SeenPicture lookAt(const Veltra::Ocelle::YCbCrFrame &frame, const QRect &viewport)
{
    const QRect part = visiblePart(QSize(frame.width, frame.height), viewport);
    SeenPicture picture { part.size(), frame.timestamp, std::nullopt };
    if (frame.y && frame.yStride >= frame.width)
        picture.reading = readPattern(frame.y + part.top() * frame.yStride + part.left(),
                                      frame.yStride, part.width(), part.height());
    return picture;
}

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
    const QRect part = visiblePart(frame.size(), surfaceFormat().viewport());
    SeenPicture picture { part.size(), frame.startTime(), std::nullopt };
    QVideoFrame mapped(frame);
    if (mapped.map(QAbstractVideoBuffer::ReadOnly)) {
        const bool isRgb = frame.pixelFormat() == QVideoFrame::Format_RGB32;
        const int stride = mapped.bytesPerLine(0);
        const uchar *const from =
                mapped.bits(0) + qint64(part.top()) * stride + part.left() * (isRgb ? 4 : 1);
        const auto read = isRgb ? readPatternRgb32 : readPattern;
        picture.reading = read(from, stride, part.width(), part.height());
        mapped.unmap();
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_seen.push_back(picture);
    }
    m_onSeen();
    return true;
}

} // namespace Compliance
