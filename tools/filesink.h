// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "videofilewriter.h"

#include <QMutex>
#include <QObject>

#include <palaver/qpvencodedvideosink.h>

namespace Tool {

/*!
 * Takes an encoder's units and writes them to a file, which is complete once the encoder has
 * finished.
 *
 * Threads: the encoder's calls on threads of its own, one at a time; the rest on the application
 *          thread, where the file is opened before the sink is added.
 * Errors:  failed() once; what comes after that is not written.
 */
class FileSink : public QObject, public QPVEncodedVideoSink
{
    Q_OBJECT
public:
    struct Written
    {
        qint64 units = 0;
        qint64 bytes = 0;
        qint64 keyFrames = 0;
        qint64 duration = 0; // microseconds from the first unit to the last one
    };

    explicit FileSink(VideoFileWriter *writer); // borrowed

    Written written() const; // any thread

    void release() override {}
    bool isFormatSupported(const QVideoEncoderSettings &settings) override;
    bool start(const QVideoEncoderSettings &settings) override;
    void present(const QPVEncodedVideoFrame &frame) override;
    void finish() override {}
    void stop() override {}

signals:
    void unitWritten(); // on the encoder's thread
    void failed(const QString &error);

private:
    VideoFileWriter *const m_writer;

    mutable QMutex m_mutex; // guards all below
    Written m_written;
    qint64 m_firstTime = 0;
    bool m_hasFailed = false;
};

} // namespace Tool
