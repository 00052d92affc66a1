// SPDX-License-Identifier: BSD-3-Clause
#include "recordsurface.h"

namespace Tool {

QList<QVideoFrame::PixelFormat>
RecordSurface::supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const
{
    if (type != QAbstractVideoBuffer::NoHandle)
        return {};
    return { QVideoFrame::Format_NV12, QVideoFrame::Format_YUV420P, QVideoFrame::Format_RGB32 };
}

bool RecordSurface::present(const QVideoFrame &frame)
{
    emit pictureTaken(frame);
    return true;
}

} // namespace Tool
