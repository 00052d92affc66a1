// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QObject>

#include <ocelle/videooutputqt5.h>

#include <memory>

class QAbstractVideoSurface;
class QRect;

/*!
 * Presents the platform's pictures on an application's video surface.
 *
 * Threads: built, destroyed and given its surface on the application thread; everything else on
 *          any thread, under the mutex of the session that delivers, but for a stop() at the end of a
 *          decoder's stream.
 * Owner:   the control that made it. The surface is borrowed.
 */
class OcelleVideoOutput : public QObject
{
    Q_OBJECT
public:
    explicit OcelleVideoOutput(QObject *parent);

    // Application thread
    QAbstractVideoSurface *surface() const;
    void setSurface(QAbstractVideoSurface *surface);

    // Any thread
    void stop();
    void setViewport(const QRect &viewport); // pixels of the decoded picture
    void setMirrored(bool mirrored);
    void onVideoFrame(const Veltra::Ocelle::YCbCrFrame *frame); // borrowed for the call
    void onGraphicBuffer(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer);

private:
    Veltra::Ocelle::VideoOutputQt5 m_output;
};
