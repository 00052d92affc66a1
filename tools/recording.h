// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "filesink.h"
#include "videocodec.h"
#include "videofilewriter.h"

#include <QObject>
#include <QSize>
#include <QTimer>
#include <QVideoFrame>

#include <palaver/qpvencodedvideoframe.h>
#include <palaver/qpvencoder.h>

#include <memory>

class QMediaService;
class QMediaServiceProviderPlugin;
class QPVEncodeControl;
class QPVEncodedVideoSourceControl;
class QVideoEncoderSettingsControl;

namespace Tool {

/*! How pictures are to be encoded and where they go. */
struct RecordingSettings
{
    QString file;
    bool replace = false; // a file that is there
    VideoCodec codec = VideoCodec::H264;
    int bitRate = 1000000;   // bits per second
    int rotation = 0;        // degrees clockwise: 0, 90, 180 or 270
    bool mirrored = false;   // top to bottom, before they are turned
    QSize size;              // of the pictures before they are turned
    double rate = 30;        // pictures per second
    int timeScale = 1000000; // ticks per second in the file, where its kind leaves the choice
};

/*!
 * Hands pictures to the encoder service and has what comes out written to a file.
 *
 * Threads: the application thread, but for close().
 * Errors:  failed() with a text; nothing is encoded after that, and end() is still to be called.
 */
class Recording : public QObject
{
    Q_OBJECT
public:
    explicit Recording(QMediaServiceProviderPlugin *backend, QObject *parent = nullptr);
    ~Recording() override;

    /*! What speaks against it before anything is done; empty where nothing does. */
    QString problem(VideoCodec codec) const;
    /*! Creates the file and gets an encoder; started() follows. */
    bool start(const RecordingSettings &settings, QString *error);
    /*! False where the encoder does not keep up: the picture is not taken, and counted as refused. */
    bool encode(const QVideoFrame &frame);
    /*! Has the rest encoded and stops; ended() follows, whatever the encoder does. */
    void end();
    /*! After ended(), on any thread: completes the file. Without \a error, the trouble was told. */
    bool close(QString *error);

    int waiting() const { return int(m_accepted - m_sink.written().units); } // pictures inside
    qint64 refused() const { return m_refused; }
    FileSink::Written written() const { return m_sink.written(); }

signals:
    void started(); // pictures are welcome
    void unitWritten();
    void unitEncoded(const QPVEncodedVideoFrame &unit);
    void failed(const QString &error);
    void ended();

private:
    void onStatusChanged(QPVEncoder::Status status);
    void onUnitWritten();
    void onStalled();
    void onStopped();
    void fail(const QString &error);
    void stopIfDone();

    QMediaServiceProviderPlugin *const m_backend;
    QMediaService *m_service = nullptr; // given back to the plugin
    QPVEncodeControl *m_control = nullptr;
    QVideoEncoderSettingsControl *m_settings = nullptr;
    QPVEncodedVideoSourceControl *m_source = nullptr;

    VideoFileWriter m_writer;
    FileSink m_sink { &m_writer }; // borrowed by the service
    QTimer m_stalled;              // from end() to ended()
    qint64 m_accepted = 0;         // pictures
    qint64 m_refused = 0;
    bool m_isStarted = false;  // the encoder is to be stopped
    bool m_isReady = false;    // it has started
    bool m_isEnding = false;   // end() was called
    bool m_isStopping = false; // and all is done but the stop
    bool m_isStuck = false;    // the encoder does not stop
    bool m_hasEnded = false;
    bool m_hasFailed = false;
};

} // namespace Tool
