// SPDX-License-Identifier: BSD-3-Clause
#include "countingsurface.h"

#include <utility>

CountingSurface::CountingSurface(std::function<void()> presented)
    : m_presented(std::move(presented))
{
}

quint64 CountingSurface::pictures() const
{
    return m_pictures;
}

QList<QVideoFrame::PixelFormat>
CountingSurface::supportedPixelFormats(QAbstractVideoBuffer::HandleType) const
{
    return { QVideoFrame::Format_NV12, QVideoFrame::Format_YUV420P };
}

bool CountingSurface::present(const QVideoFrame &)
{
    ++m_pictures;
    m_presented();
    return true;
}
