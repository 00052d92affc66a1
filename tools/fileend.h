// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "avpointers.h"

#include <QString>

namespace Tool {

/*! How long the stream is in microseconds, as its file tells; 0 where it does not, or guesses. */
qint64 toldDuration(const AVFormatContext &container, int stream);

/*!
 * Whether a file was cut off: how far the pictures that were read from it reach, beside what it
 * tells of their duration.
 *
 * Threads: one at a time.
 * Units:   microseconds.
 */
class FileEnd
{
public:
    void set(qint64 duration, double rate); // of the whole stream; pictures per second
    /*! A packet of the stream, at \a time since the first one. */
    void add(const AVPacket &packet, qint64 time, AVRational timeBase);
    void addCut(); // a piece of the file was not whole
    /*! After the end: why that came too early; empty where it did not. */
    QString missing(const QString &path) const;

private:
    qint64 m_duration = 0;
    double m_period = 0; // of a picture
    qint64 m_end = 0;
    bool m_isCut = false;
};

} // namespace Tool
