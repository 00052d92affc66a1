// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoSurface>

/*! A video surface that is never drawn on: the doubles' outputs only keep its address. */
class FakeSurface : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    using QAbstractVideoSurface::QAbstractVideoSurface;

    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override;
    bool present(const QVideoFrame &frame) override;
};
