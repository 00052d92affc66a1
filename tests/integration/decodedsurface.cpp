// SPDX-License-Identifier: BSD-3-Clause
#include "decodedsurface.h"

#include <QThread>
#include <QVideoFrame>
#include <QVideoSurfaceFormat>

#include <algorithm>

namespace {

/*! The part of a mapped YUV420P or NV12 frame that is to be seen. */
RawPicture visiblePart(const QVideoFrame &frame, const QRect &part)
{
    RawPicture picture(part.width(), part.height());
    for (int line = 0; line < part.height(); ++line) {
        const uchar *const from =
                frame.bits(0) + (part.top() + line) * frame.bytesPerLine(0) + part.left();
        std::copy(from, from + part.width(), picture.y.begin() + line * part.width());
    }
    const bool isInterleaved = frame.pixelFormat() == QVideoFrame::Format_NV12;
    const int step = isInterleaved ? 2 : 1;
    const int width = picture.chromaWidth();
    for (int line = 0; line < picture.chromaHeight(); ++line) {
        const auto at = [&](int plane) {
            return frame.bits(plane) + (part.top() / 2 + line) * frame.bytesPerLine(plane) +
                   part.left() / 2 * step;
        };
        const uchar *const cb = at(1);
        const uchar *const cr = isInterleaved ? cb + 1 : at(2);
        for (int x = 0; x < width; ++x) {
            picture.cb[std::size_t(line * width + x)] = cb[x * step];
            picture.cr[std::size_t(line * width + x)] = cr[x * step];
        }
    }
    return picture;
}

} // namespace

QList<QVideoFrame::PixelFormat>
DecodedSurface::supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const
{
    if (type != QAbstractVideoBuffer::NoHandle)
        return {};
    return { QVideoFrame::Format_YUV420P, QVideoFrame::Format_NV12 };
}

bool DecodedSurface::present(const QVideoFrame &shown)
{
    if (QThread::currentThread() != thread()) {
        ++strays;
        return false;
    }
    ++presented;
    if (keepsTimes)
        times.append(shown.startTime());
    if (!onPicture)
        return true;
    QVideoFrame frame(shown);
    if (!frame.map(QAbstractVideoBuffer::ReadOnly))
        return false;
    const QRect whole(QPoint(), frame.size());
    const QRect viewport = surfaceFormat().viewport() & whole;
    onPicture(visiblePart(frame, viewport.isEmpty() ? whole : viewport));
    frame.unmap();
    return true;
}
