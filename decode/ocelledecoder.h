// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMutex>
#include <QObject>

#include <ocelle/videodecoder.h>
#include <palaver/qpvdecoder.h>

#include <atomic>
#include <memory>

class QPVEncodedVideoFrame;
class QVideoEncoderSettings;

/*!
 * Wraps one platform decoder: keeps its status, refuses what does not fit it, and hands over one
 * compressed frame at a time.
 *
 * Threads: grouped below; built and destroyed on the application thread.
 * Owner:   OcelleDecodeWorker, by value.
 * Errors:  false; the worker reports them.
 */
class OcelleDecoder : public QObject
{
    Q_OBJECT
public:
    explicit OcelleDecoder(QObject *parent);
    /*! Flushes and stops an active decoder. */
    ~OcelleDecoder();

    // Any thread
    /*! The kind of codec of a MIME type, compared exactly; Unknown, with a warning, for others. */
    static Veltra::Ocelle::CodecType codecType(const QString &mimeType);
    QPVDecoder::Status status() const;
    /*! Drops the decoder without a word to it, also while the worker thread is inside of it. */
    void kill();

    // Worker thread
    //
    //  Unloaded --load--> Loaded --start--> Starting --decode--> Active
    //  Unloaded <-- Stopping <----- flush, drain ------'-----------'
    //
    void setStatus(QPVDecoder::Status status);
    /*! Takes \a decoder when unloaded; an empty one forces Unloaded and keeps what is held. */
    bool load(std::shared_ptr<Veltra::Ocelle::VideoDecoder> decoder);
    bool start(const QVideoEncoderSettings &settings);
    /*! The first frame after a start makes the status Active, whether it is accepted or not. */
    bool decode(const QPVEncodedVideoFrame &frame);
    void flush();
    void drain();

signals:
    void statusChanged(QPVDecoder::Status status); // on the thread that changed it, no lock held

private:
    using Decoder = std::shared_ptr<Veltra::Ocelle::VideoDecoder>;

    Decoder heldDecoder() const;
    bool setStatusWhileHolding(const Decoder &decoder, QPVDecoder::Status status);
    void finish(void (Veltra::Ocelle::VideoDecoder::*ending)());

    // Guards m_decoder; never held while calling out. Whoever calls the decoder holds a reference of
    // its own, so that kill() on another thread ends nothing under it.
    mutable QMutex m_decoderMutex;
    Decoder m_decoder; // empty until loaded, and again once flushed, drained or killed

    std::atomic<QPVDecoder::Status> m_status { QPVDecoder::UnloadedStatus };
};
