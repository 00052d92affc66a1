// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QObject>
#include <QRect>

#include <ocelle/frames.h>
#include <ocelle/global.h>

#include <memory>

class QAbstractVideoSurface;

namespace Veltra {
namespace Ocelle {

class VideoOutputQt5Private;

/*!
 * Renders pictures onto a QAbstractVideoSurface.
 *
 * Threads: pictures, stop() and the setters may come from any thread; videoSurface() and
 *          setVideoSurface() belong to the thread that owns this object.
 * Owner:   whoever made it; the surface is borrowed.
 */
class OCELLE_EXPORT VideoOutputQt5 : public QObject
{
    Q_OBJECT
public:
    explicit VideoOutputQt5(QObject *parent = nullptr);
    ~VideoOutputQt5();

    QAbstractVideoSurface *videoSurface() const;
    void setVideoSurface(QAbstractVideoSurface *surface);
    void setViewport(QRect viewport);
    void setMirrored(bool mirrored);
    void stop();

    void onGraphicBuffer(std::shared_ptr<GraphicBuffer> buffer);

    /*! \a frame is valid only during the call. */
    void onVideoFrame(const YCbCrFrame *frame);

private:
    VideoOutputQt5Private *const m_d;
};

} // namespace Ocelle
} // namespace Veltra
