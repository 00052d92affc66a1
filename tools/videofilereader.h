// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "avpointers.h"
#include "fileend.h"
#include "storedturn.h"

#include <QSize>
#include <QString>
#include <QVideoFrame>

#include <memory>

namespace Tool {

/*!
 * The pictures of a video file, once, from the first to the last.
 *
 * Pictures are the decoder's own memory where their format is one that encoders take, else YUV420P.
 *
 * Threads: one at a time. The decoder has threads of its own.
 * Units:   microseconds since the first picture.
 * Errors:  an empty pointer or Result::Failed, with a text that names the file. Damage costs the
 *          pictures concerned and is counted.
 */
class VideoFileReader
{
public:
    struct Properties
    {
        QSize size;
        double rate = 0;         // pictures per second
        int timeScale = 1000000; // ticks per second of the file's own time
        qint64 duration = 0;     // microseconds; 0 where the file does not say
        StoredTurn turn;         // that the pictures do not have yet
    };
    enum class Result { Picture, End, Failed };

    static std::unique_ptr<VideoFileReader> open(const QString &path, QString *error);
    ~VideoFileReader();

    const Properties &properties() const { return m_properties; }
    Result read(QVideoFrame *frame, QString *error);
    int damaged() const { return m_damaged; } // places in the file
    /*! After the end: why that came too early; empty where it did not. */
    QString missingEnd() const { return m_end.missing(m_path); }

private:
    VideoFileReader() = default;

    bool openStream(QString *error);
    void readProperties();
    bool feed(QString *error);
    bool wrap(QVideoFrame *frame, QString *error);
    bool convert(QString *error);
    void follow(const AVPacket &packet);
    qint64 timeOf(const AVFrame &picture);

    QString m_path;
    AVFormatContext *m_container = nullptr; // owned
    AvPointer<AVCodecContext> m_decoder;
    AvPointer<AVPacket> m_packet;
    AvPointer<AVFrame> m_picture;
    AvPointer<SwsContext> m_scaler; // for formats that need one
    int m_stream = -1;
    Properties m_properties;
    bool m_isDraining = false;
    int m_damaged = 0;
    FileEnd m_end;
    qint64 m_packets = 0;           // of the stream
    std::int64_t m_firstPacket = 0; // its stamp
    bool m_hasFirst = false;
    std::int64_t m_firstStamp = 0;
    qint64 m_lastTime = 0;
};

} // namespace Tool
