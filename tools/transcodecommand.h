// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "commandline.h"
#include "fileplayer.h"
#include "recording.h"
#include "recordreport.h"
#include "recordsurface.h"

#include <QElapsedTimer>
#include <QQueue>

#include <memory>

namespace Tool {

/*!
 * Decodes a video file with the decoder service and encodes its pictures with the encoder service,
 * as fast as that goes and without losing one.
 *
 * Threads: the application thread.
 * Errors:  explained on standard error; the exit code tells wrong usage from failure. What was
 *          encoded before a failure stays.
 */
class TranscodeCommand : public QObject
{
    Q_OBJECT
public:
    explicit TranscodeCommand(const EncodeOptions &options, QObject *parent = nullptr);
    ~TranscodeCommand() override;

    /*! Runs until all is in the file, it is interrupted or fails; returns the exit code. */
    int run();

private:
    bool prepare();
    void onPicture(const QVideoFrame &frame);
    void startRecording(QSize size);
    void encode();
    void onDecoded();
    void endIfDone();
    void onTick();
    void fail(const QString &error);
    void stop();
    int close();

    const EncodeOptions m_options;
    RecordSurface m_surface; // before the player, which lets go of it
    FilePlayer m_player { &m_surface };
    std::unique_ptr<Recording> m_recording;
    RecordReport m_report;
    QQueue<QVideoFrame> m_pictures; // decoded, for the encoder
    qint64 m_taken = 0;             // pictures from the surface
    int m_exitCode = 0;
    bool m_isRecording = false; // the encoder was started
    bool m_isReady = false;     // it takes pictures
    bool m_isDecoded = false;   // nothing more comes from the decoder
    bool m_isFinished = false;  // nothing more goes to the encoder
    QElapsedTimer m_time;       // since it began
    QTimer m_tick;
    int m_ticks = 0;
};

} // namespace Tool
