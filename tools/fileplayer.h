// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "decoding.h"

#include <QElapsedTimer>

#include <functional>
#include <memory>
#include <optional>

class QVideoFrame;

namespace Tool {

/*!
 * Has a video file decoded by the decoder service: reads it, keeps the decoder busy and counts what
 * comes to the surface.
 *
 * Threads: the application thread, which is also the surface's.
 * Errors:  failed() with a text, then ended(). noticed() for trouble that does not end it.
 */
class FilePlayer : public QObject
{
    Q_OBJECT
public:
    /*! \a surface is borrowed, outlives this, and its user calls onPicture(). */
    explicit FilePlayer(QAbstractVideoSurface *surface, QObject *parent = nullptr);

    /*! Opens the file and the service; \a isUsage tells whether the command was wrong. */
    bool open(const QString &path, std::optional<VideoCodec> codec, QString *error, bool *isUsage);
    const StreamReader &stream() const { return *m_reader; }

    /*! In the stream's own time, else as fast as it goes; before start(). */
    void setRealTime(bool isRealTime) { m_isRealTime = isRealTime; }
    /*! Units are handed over only while that is true; feed() once it may have become that. */
    void setCondition(std::function<bool()> condition) { m_condition = std::move(condition); }

    void start(); // in the event loop
    void feed();
    /*! To be told of each picture that has come to the surface. */
    void onPicture(const QVideoFrame &frame);
    /*! Ends it early, discarding what is inside; ended() follows. */
    void stop();

    const Decoding::Counts &counts() const { return m_decoding->counts(); }
    int inside() const { return m_decoding->inside(); }
    bool isComplete() const { return m_isComplete; } // all of the file was handed over and wanted
    bool hasTrouble() const { return m_hasTrouble; } // of the file or the decoder
    double seconds() const;                          // from the first unit to the last picture
    double rate() const;                             // pictures per second
    /*! How far it has come: "12 s: 300 pictures in, 299 out, 25.0 pictures/s, 40 %". */
    QString progress() const;

signals:
    void noticed(const QString &trouble); // the first few
    void failed(const QString &error);
    void ended();

private:
    bool isDue();
    bool readUnit();
    void notice(const QString &trouble);
    void onEnded();

    QAbstractVideoSurface *const m_surface;
    std::unique_ptr<StreamReader> m_reader;
    std::unique_ptr<Decoding> m_decoding;
    std::function<bool()> m_condition;
    std::optional<StreamUnit> m_next; // read and not yet handed over
    QElapsedTimer m_time;             // since the first unit
    qint64 m_lastPicture = 0;         // microseconds of m_time
    QTimer m_due;                     // for the next unit
    bool m_isRealTime = false;
    bool m_isFeeding = false;
    bool m_isOver = false; // nothing more is handed over
    bool m_isComplete = false;
    bool m_hasTrouble = false;
    int m_noticed = 0;
};

} // namespace Tool
