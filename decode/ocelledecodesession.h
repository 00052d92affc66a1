// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ocellevideosession.h"
#include "ocelleworkerthread.h"

#include <QMutex>
#include <QStringList>
#include <QTimer>
#include <QVideoEncoderSettings>

#include <ocelle/videodecoder.h>
#include <palaver/qpvdecoder.h>

#include <atomic>
#include <memory>
#include <string>

class OcelleDecodeControl;
class OcelleDecodeListener;
class OcelleDecodeWorker;
class OcelleProvider;
class QPVEncodedVideoFrame;

/*!
 * The heart of one decoder service: gets decoders from the platform, hands them and the compressed
 * frames to the worker, and the decoded pictures to the video output.
 *
 * Threads: grouped below; lives on the application thread. The control's error() is emitted on
 *          whatever thread the error came up, statusChanged() on the application thread.
 * Owner:   OcelleDecodeService, which calls shutdown() before it deletes the session.
 * Errors:  QPVDecoder::Error with a text; a refused frame is told by decode() alone.
 *
 * The application may take the service down from a slot of any of the control's signals that is
 * called on the application thread, but for one of error() that the worker's thread waits for: that
 * one is waited for in turn.
 */
class OcelleDecodeSession : public OcelleVideoSession, public Veltra::Ocelle::VideoDecoderListener
{
    Q_OBJECT
public:
    OcelleDecodeSession(OcelleProvider *provider, QObject *parent);
    ~OcelleDecodeSession();

    // Application thread
    OcelleDecodeControl *decodeControl() const;
    QStringList supportedCodecs(bool flag) const;
    bool isFormatSupported(const QVideoEncoderSettings &settings) const; // only the codec counts
    QVideoEncoderSettings codecSettings() const;
    /*! Starts decoding; does nothing where a stream of the same codec is decoded already. */
    bool startDecoder(const QVideoEncoderSettings &settings);
    bool decode(const QPVEncodedVideoFrame &frame);
    void flush();
    void stop(); // as flush()
    void drain();
    /*!
     * Ends decoding and the worker thread; events are served meanwhile. A decoder that does not
     * finish within 500 ms is dropped as it is; the wait for the thread has no limit.
     */
    void shutdown();

    // Any thread
    QPVDecoder::Status status() const;
    void setError(QPVDecoder::Error error, const QString &text);
    /*! The control, kept while an error is told; null once the session goes. */
    std::shared_ptr<OcelleDecodeControl> sharedControl() const;
    /*! Tells of a decoder's error; needs no session. */
    static void tellError(const std::shared_ptr<OcelleDecodeControl> &control,
                          const std::string &message);

    // Library threads
    void onDecodedYCbCrFrame(const Veltra::Ocelle::YCbCrFrame *frame) override;
    void onDecodedGraphicBuffer(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer) override;
    void onDecoderParameterChanged(Veltra::Ocelle::VideoDecoderParameter parameter,
                                   const std::string &value) override;
    void onDecoderError(const std::string &message) override; // the listener's own needs no session
    void onDecoderEOS() override;

public slots:
    void onStatusChanged(QPVDecoder::Status status); // the worker waits meanwhile

private:
    static void tellError(const std::shared_ptr<OcelleDecodeControl> &control,
                          QPVDecoder::Error error, const QString &text);
    void dropUnfinishedDecoder();
    void deleteControl();

    Veltra::Ocelle::CodecManager *const m_codecManager; // not owned; null without codecs
    mutable QMutex m_controlMutex; // guards the next one where other threads take it
    std::shared_ptr<OcelleDecodeControl> m_control; // changed on the application thread
    QVideoEncoderSettings m_settings;               // application thread; of the current stream
    OcelleDecodeListener *const m_listener;         // what decoders call; stays behind
    OcelleWorkerThread *const m_workerThread;       // owned
    OcelleDecodeWorker *const m_worker;             // owned, lives in that thread
    std::unique_ptr<QTimer> m_shutdownTimer;        // application thread
    bool m_isDropped = false; // application thread; statuses still on their way come too late
};
