// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "fileplayer.h"
#include "forwardingsurface.h"

#include <QObject>

#include <memory>

namespace Viewer {

/*!
 * Plays a video file through the decoder service, for a VideoOutput whose source this is.
 *
 * Threads: the application thread.
 * Units:   seconds, pictures.
 * Errors:  failed() with a text, for each of the first few troubles with a file.
 */
class Player : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QAbstractVideoSurface *videoSurface READ videoSurface WRITE setVideoSurface NOTIFY
                       videoSurfaceChanged)
    /*! The one that the decoder's pictures come to, for statistics. */
    Q_PROPERTY(QAbstractVideoSurface *outputSurface READ outputSurface CONSTANT)
    Q_PROPERTY(bool playing READ isPlaying NOTIFY playingChanged)
    Q_PROPERTY(QString details READ details NOTIFY playingChanged) // "H264, 1280 × 720"
    Q_PROPERTY(qreal position READ position NOTIFY positionChanged)
    Q_PROPERTY(qreal duration READ duration NOTIFY playingChanged)     // 0 where it is not known
    Q_PROPERTY(bool hasPicture READ hasPicture NOTIFY positionChanged) // of this file
    Q_PROPERTY(int inside READ inside NOTIFY positionChanged)          // pictures in the decoder
public:
    explicit Player(QObject *parent = nullptr);
    ~Player() override;

    QAbstractVideoSurface *videoSurface() const { return m_surface.target(); }
    void setVideoSurface(QAbstractVideoSurface *surface);
    QAbstractVideoSurface *outputSurface() { return &m_surface; }
    bool isPlaying() const { return bool(m_player); }
    QString details() const { return m_details; }
    qreal position() const { return m_position; }
    qreal duration() const { return m_duration; }
    bool hasPicture() const { return m_hasPicture; }
    int inside() const { return m_player ? m_player->inside() : 0; }

    /*! Plays it from its start, instead of what plays. */
    Q_INVOKABLE void play(const QString &file);
    Q_INVOKABLE void stop();

signals:
    void videoSurfaceChanged();
    void playingChanged();
    void positionChanged();
    void finished(); // all was shown
    void failed(const QString &error);

private:
    void onPicture(const QVideoFrame &frame);
    void onEnded();

    ForwardingSurface m_surface; // before the player, which lets go of it
    std::unique_ptr<Tool::FilePlayer> m_player;
    QString m_file;
    QString m_details;
    qreal m_position = 0;
    qreal m_duration = 0;
    bool m_hasPicture = false;
    bool m_hasFailed = false;
};

} // namespace Viewer
