// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "videocodec.h"

#include <QByteArray>
#include <QSize>
#include <QString>

struct AVFormatContext;

namespace Tool {

/*!
 * Writes compressed video to a file through libavformat. Until it is complete the file is called
 * FILE.part, so that there is never a broken one under the name that was asked for.
 *
 * Threads: one call at a time.
 * Units:   times in microseconds; the first unit's is where the file's time begins.
 * Errors:  false, and \a error says which file and why. After a failed write() nothing more can be
 *          written; what was, is still in FILE.part.
 */
class VideoFileWriter
{
public:
    struct Format
    {
        VideoCodec codec = VideoCodec::H264;
        QSize size;    // pixels
        double rate;   // pictures per second
        int timeScale; // ticks per second, where the container leaves the choice
    };

    VideoFileWriter() = default;
    ~VideoFileWriter();
    VideoFileWriter(const VideoFileWriter &) = delete;
    VideoFileWriter &operator=(const VideoFileWriter &) = delete;

    /*! What speaks against writing to \a file; empty where nothing does. */
    static QString problem(const QString &file, bool replace);

    /*! Whether writing \a file would replace \a input, which is still to be read. */
    static bool replaces(const QString &file, const QString &input);

    /*! Creates FILE.part; one that is there is refused, unless it is to be replaced. */
    bool open(const QString &file, const Format &format, bool replace, QString *error);
    /*! One picture; the first one is a key frame. A negative \a time is the one after the last. */
    bool write(const QByteArray &unit, qint64 time, bool keyFrame, QString *error);
    /*! Completes the file and gives it its name; without any unit, deletes it. */
    bool close(QString *error);

    QString partName() const { return m_file + partSuffix(); }
    static QString partSuffix() { return QStringLiteral(".part"); }

private:
    bool begin(const QByteArray &unit, QString *error);
    bool rename(QString *error);
    qint64 ticks(qint64 time);
    bool fail(const QString &reason, QString *error);
    void release();

    QString m_file;
    Format m_format;
    bool m_replace = false;
    AVFormatContext *m_container = nullptr; // owned; with a stream once begin() was called
    bool m_isBegun = false;
    bool m_isBroken = false;
    qint64 m_firstTime = 0;
    qint64 m_lastTicks = 0; // in the stream's time base
};

} // namespace Tool
