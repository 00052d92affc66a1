// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "latencyhistogram.h"

#include <QAbstractVideoSurface>
#include <QImage>
#include <QRect>
#include <QVideoFrame>

namespace Tool {

/*!
 * Takes a camera's pictures, measures them and keeps the newest one.
 *
 * Threads: the application thread.
 * Units:   microseconds of the steady clock.
 * Errors:  refuses pictures beyond the limit.
 */
class PreviewSurface : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    explicit PreviewSurface(QObject *parent = nullptr);

    /*! Takes no more than \a pictures. */
    void setLimit(qint64 pictures) { m_limit = pictures; }

    /*! Shows them turned by 0, 90, 180 or 270 \a degrees clockwise. */
    void setTurn(int degrees) { m_turn = degrees; }

    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override;
    bool present(const QVideoFrame &frame) override;

    qint64 presented() const { return m_presented; }
    double rate() const; // pictures per second; 0 before the second one
    const LatencyHistogram &latencies() const { return m_latencies; }

    /*! The newest picture, and how to show it; both stay after the camera has stopped. */
    QVideoFrame frame() const { return m_frame; }
    bool isMirrored() const { return m_mirrored; }
    QRect viewport() const { return m_viewport; } // pixels of it that are to be seen
    /*! What is to be seen of it, as large as it is or as fits into \a size; null for no picture. */
    QImage image(QSize size = QSize()) const;

signals:
    void firstPictureTaken();
    void pictureTaken();
    void limitReached(); // from within present()

private:
    QImage imageBeforeTurn(QSize size) const;

    qint64 m_limit = -1;
    int m_turn = 0; // degrees clockwise
    qint64 m_presented = 0;
    qint64 m_firstTime = 0;
    qint64 m_lastTime = 0;
    LatencyHistogram m_latencies;
    QVideoFrame m_frame;
    bool m_mirrored = false;
    QRect m_viewport;
};

} // namespace Tool
