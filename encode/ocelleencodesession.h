// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ocelleencodedvideooutput.h"
#include "ocelleworkerthread.h"

#include <QList>
#include <QMutex>
#include <QObject>
#include <QSize>
#include <QStringList>
#include <QVideoEncoderSettings>
#include <QVideoFrame>
#include <QVideoSurfaceFormat>

#include <ocelle/videoencoder.h>
#include <palaver/qpvencoder.h>

#include <memory>
#include <string>

class OcelleEncodeControl;
class OcelleEncodeListener;
class OcelleEncodeWorker;
class OcelleProvider;
class QPVEncodeControl;
class QPVSink;

namespace Veltra {
namespace Ocelle {
class CodecManager;
}
} // namespace Veltra

/*!
 * The heart of one encoder service: keeps the settings, gets encoders from the platform for the
 * worker to run, starts and finishes the sink as the encoder comes and goes, and hands on what the
 * encoder puts out. Changed rotation or mirroring restarts a running encoder; the sink stays.
 *
 * Threads: grouped below; lives on the application thread. The control's error() is emitted on
 *          whatever thread the error came up, encodedVideoFrame() and endOfStream() on threads of
 *          the platform, statusChanged() on the application thread.
 * Owner:   OcelleEncodeService, which calls shutdown() before it deletes the session.
 * Errors:  QPVEncoder::Error with a text; no status changes because of one.
 *
 * Slots of the control's signals and the sink's own calls may use all controls of the service, with
 * two exceptions. Only a slot of a signal that is emitted on the application thread may take the
 * service down, and no sink's call, nor a slot of encodedVideoFrame(), may wait for the application
 * thread: that one waits for them when the service goes.
 */
class OcelleEncodeSession : public QObject, public Veltra::Ocelle::VideoEncoderListener
{
    Q_OBJECT
public:
    OcelleEncodeSession(OcelleProvider *provider, QObject *parent);
    ~OcelleEncodeSession();

    // Application thread
    /*! Stops the encoder and ends the worker thread; events are served meanwhile. */
    void shutdown();

    // Any thread
    QPVEncodeControl *encodeControl() const;
    QPVEncoder::Status status() const;
    bool encode(const QVideoFrame &frame); // false: the queue is full, or nothing is to be encoded
    QStringList supportedCodecs(bool flag) const; // MIME types
    QList<qreal> supportedFrameRates() const;     // frames per second
    QList<QSize> supportedResolutions() const;    // pixels
    QList<QVideoFrame::PixelFormat> supportedPixelFormats() const;
    QVideoEncoderSettings videoSettings() const;
    void setVideoSettings(const QVideoEncoderSettings &settings);
    /*! Has pictures of the size and rate of \a format encoded; the first one settles the rest. */
    bool startEncoder(const QVideoSurfaceFormat &format);
    void stop(); // drops what is queued
    /*! Makes \a sink, which is borrowed, the one sink; null and other kinds of sink: none, false. */
    bool addSink(QPVSink *sink);
    bool removeSink(QPVSink *sink);
    void setError(QPVEncoder::Error error, const QString &text);

    // Library threads, the worker thread, or that on which an encoder is given up
    void onEncodedFrame(unsigned char *data, unsigned long size, unsigned long timestamp,
                        Veltra::Ocelle::FrameType type) override;
    void onEncoderParameterChanged(Veltra::Ocelle::VideoEncoderParameter parameter,
                                   const std::string &value) override;
    void onEncoderError(const std::string &message) override;
    void onEncoderEOS() override;

public slots:
    void onStatusChanged(QPVEncoder::Status status); // the worker waits meanwhile

private:
    //  None --changed options--> Stopping --unloaded--> Starting --starting--> None
    enum class Restart { None, Stopping, Starting };
    enum class Start { Done, NoEncoder, Refused, Cancelled };
    using Encoder = std::shared_ptr<Veltra::Ocelle::VideoEncoder>;

    void finishRestartingEncoder();
    Start acquireAndStart(bool restarts, Encoder *encoder);
    bool reportStart(Start result);
    void onEncoderStarting();
    void onEncoderUnloaded();
    void onWorkerIdle();

    Veltra::Ocelle::CodecManager *const m_codecManager; // not owned; null without codecs
    OcelleEncodeControl *const m_control;               // owned
    OcelleEncodeListener *const m_listener;             // what encoders call; stays behind
    OcelleEncodedVideoOutput m_output;
    OcelleWorkerThread *const m_workerThread; // owned
    OcelleEncodeWorker *const m_worker;       // owned, lives in that thread

    // Guards all below and makes a change of settings, a start and a stop one step each towards the
    // worker; never held while calling out of this and the worker.
    mutable QMutex m_settingsMutex;
    QVideoEncoderSettings m_settings;
    QVideoSurfaceFormat m_format; // as last started with
    Restart m_restart = Restart::None;
    bool m_isShutDown = false; // nothing starts any more
};
