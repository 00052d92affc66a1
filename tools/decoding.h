// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "latencyhistogram.h"
#include "streamreader.h"

#include <QHash>
#include <QObject>
#include <QTimer>

#include <palaver/qpvdecoder.h>

class QAbstractVideoSurface;
class QMediaService;
class QMediaServiceProviderPlugin;
class QPVDecodeControl;
class QVideoRendererControl;

namespace Tool {

/*!
 * Hands a stream to the decoder service, whose pictures come to a surface, and never more at a time
 * than the service's queue and the surface's have room for: what overflows would be lost.
 *
 * Threads: the application thread, which is also the surface's.
 * Errors:  failed() with a text; nothing is decoded after that, and ended() follows. damaged() for
 *          what the decoder tells of while it goes on.
 */
class Decoding : public QObject
{
    Q_OBJECT
public:
    static constexpr int MostInside = 20; // units, as many as the service's queue takes

    /*! What became of the stream. */
    struct Counts
    {
        qint64 units = 0;                              // handed over
        qint64 fields = 0;                             // that they show
        qint64 pictures = 0;                           // that came to the surface
        qint64 damages = 0;                            // errors that the decoder told of
        LatencyHistogram times;                        // from handing over to the surface
        qint64 expected() const { return fields / 2; } // pictures
        qint64 lost() const { return qMax<qint64>(0, expected() - pictures); }
    };

    /*! \a surface is borrowed and outlives this. */
    Decoding(QMediaServiceProviderPlugin *backend, QAbstractVideoSurface *surface,
             QObject *parent = nullptr);
    ~Decoding() override;

    /*! What speaks against it before anything is done; empty where nothing does. */
    QString problem(VideoCodec codec) const;
    /*! Gets a decoder; started() follows. */
    bool start(VideoCodec codec, QSize size, QString *error);
    /*! False where there is no room: the unit is not taken. */
    bool decode(const StreamUnit &unit);
    /*! To be told of each picture that has come to the surface. */
    void onPicture(qint64 time);
    void drain(); // lets what is inside come out and stops; ended() follows
    void stop();  // discards what is inside; ended() follows

    int inside() const { return m_inside.size(); } // units whose pictures are on their way
    const Counts &counts() const { return m_counts; }

signals:
    void started();     // units are welcome
    void roomWasMade(); // maybe, without a picture
    void damaged(const QString &error);
    void failed(const QString &error);
    void ended();

private:
    struct Unit
    {
        qint64 index;    // of all
        qint64 handedAt; // microseconds
    };

    void onStatusChanged(QPVDecoder::Status status);
    void onError(const QString &text);
    void onTick();
    void forget(qint64 beforeIndex);
    void end(void (QPVDecodeControl::*ending)());
    void announceEnd();

    QMediaServiceProviderPlugin *const m_backend;
    QMediaService *m_service = nullptr; // given back to the plugin
    QPVDecodeControl *m_control = nullptr;
    QVideoRendererControl *m_renderer = nullptr;
    QAbstractVideoSurface *const m_surface;

    QHash<qint64, Unit> m_inside; // by time
    Counts m_counts;
    QTimer m_tick;
    qint64 m_progress = 0; // units and pictures so far
    qint64 m_progressAtTick = 0;
    int m_idleTicks = 0;
    bool m_hasStarted = false;
    bool m_isEnding = false;
    bool m_hasFailed = false;
    bool m_hasEnded = false;
};

} // namespace Tool
