// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoSurface>
#include <QVideoFrame>

namespace Tool {

/*!
 * Takes a camera's pictures in the formats that the encoders take as they are.
 *
 * Threads: the application thread.
 */
class RecordSurface : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    using QAbstractVideoSurface::QAbstractVideoSurface;

    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override;
    bool present(const QVideoFrame &frame) override;

signals:
    void pictureTaken(const QVideoFrame &frame);
};

} // namespace Tool
