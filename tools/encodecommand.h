// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "commandline.h"
#include "recording.h"
#include "recordreport.h"
#include "videofilereader.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>

namespace Tool {

/*!
 * Encodes a video file to another one, as fast as that goes and without losing a picture.
 *
 * Threads: the application thread.
 * Errors:  explained on standard error; the exit code tells wrong usage from failure. What was
 *          encoded before a failure stays.
 */
class EncodeCommand : public QObject
{
    Q_OBJECT
public:
    explicit EncodeCommand(const EncodeOptions &options, QObject *parent = nullptr);
    ~EncodeCommand() override;

    /*! Runs until all is encoded, it is interrupted or fails; returns the exit code. */
    int run();

private:
    bool prepare();
    void start();
    void feed();
    bool readPicture();
    void onTick();
    void finish(int exitCode, const QString &error = QString());
    int close();

    const EncodeOptions m_options;
    std::unique_ptr<VideoFileReader> m_reader;
    std::unique_ptr<Recording> m_recording;
    RecordReport m_report;
    QSize m_size;       // of the first picture
    QVideoFrame m_next; // read, and not yet taken by the encoder
    int m_exitCode = 0;
    bool m_isFinished = false;
    QElapsedTimer m_time; // since it began
    QTimer m_tick;
    int m_ticks = 0;
};

} // namespace Tool
