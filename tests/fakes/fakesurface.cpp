// SPDX-License-Identifier: BSD-3-Clause
#include "fakesurface.h"

QList<QVideoFrame::PixelFormat>
FakeSurface::supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const
{
    if (type != QAbstractVideoBuffer::NoHandle)
        return {};
    return { QVideoFrame::Format_NV12, QVideoFrame::Format_YUV420P };
}

bool FakeSurface::present(const QVideoFrame &frame)
{
    return frame.isValid();
}
