// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "rawpicture.h"

#include <QAbstractVideoSurface>
#include <QList>

#include <functional>

/*!
 * An application's own surface: takes decoded pictures as they are and keeps what is to be seen.
 *
 * Threads: only the one it lives on; a picture presented elsewhere is counted in strays.
 */
class DecodedSurface : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    using QAbstractVideoSurface::QAbstractVideoSurface;

    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override;
    bool present(const QVideoFrame &frame) override;

    std::function<void(const RawPicture &)> onPicture; // unset: pictures are only counted
    int presented = 0;
    QList<qint64> times; // microseconds; of each picture
    bool keepsTimes = true;
    int strays = 0;
};
