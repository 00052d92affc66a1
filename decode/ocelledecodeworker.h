// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ocelledecoder.h"

#include <QMutex>
#include <QObject>
#include <QVideoEncoderSettings>

#include <palaver/qpvencodedvideoframe.h>

#include <atomic>
#include <deque>
#include <memory>

class OcelleDecodeSession;

/*!
 * Runs the decoder on the thread named "DecodeWorker", behind a bounded queue of compressed frames.
 *
 * Threads: grouped below; built and destroyed on the application thread, moved to the worker thread
 *          in between.
 * Owner:   OcelleDecodeSession, which deletes it after that thread has finished.
 * Units:   depth and threshold in frames.
 * Errors:  enqueue() returns false for a frame it refuses. What fails later is reported through
 *          OcelleDecodeSession::setError().
 */
class OcelleDecodeWorker : public QObject
{
    Q_OBJECT
public:
    explicit OcelleDecodeWorker(OcelleDecodeSession *session);
    ~OcelleDecodeWorker();

    // Any thread
    /*! Ends what runs and starts \a decoder instead. Always true; a failure is reported later. */
    bool start(std::shared_ptr<Veltra::Ocelle::VideoDecoder> decoder,
               const QVideoEncoderSettings &settings);
    /*! False where the queue is full or about to be discarded. */
    bool enqueue(const QPVEncodedVideoFrame &frame);
    void flush(); // discards what is queued, then ends
    void drain(); // decodes what is queued, then ends
    /*! Drops the decoder at once, also while the worker thread is inside of it. */
    void kill();
    /*! From here on no signal is emitted any more. */
    void silence();
    void eos();

    bool running() const; // as requested
    QPVDecoder::Status status() const;
    int depth() const;
    void setDepth(int depth);
    int threshold() const;
    /*! Asks for frames at once where fewer than \a threshold are queued. */
    void setThreshold(int threshold);
    void requestState(bool run);

    // Worker thread
    void start();
    void stop();
    void decode();
    QPVEncodedVideoFrame dequeue(); // not valid when the queue is empty

    bool event(QEvent *event) override;

signals:
    void statusChanged(QPVDecoder::Status status); // no lock held
    void needData(unsigned int frameCountHint);    // room in the queue; no lock held

private slots:
    void onStatusChanged(QPVDecoder::Status status);
    //  requested applied active
    //      -        -      -     idle
    //      x        x      -     starting, waiting for the decoder's status
    //      x        x      x     running
    //      ?        -      x     stopping; then idle, or starting again where requested
    void applyState();

private:
    using Queue = std::deque<QPVEncodedVideoFrame>; // makes no room for each frame anew

    /*! What a start takes with it. */
    struct Launch
    {
        std::shared_ptr<Veltra::Ocelle::VideoDecoder> decoder;
        QVideoEncoderSettings settings;
        Queue discarded; // goes with no lock held
    };

    Launch takeLaunch();
    void launch(Launch launch);
    void changeRequest(bool run, bool discard);
    void queueApplyState();
    void emitNeedData(int room);
    bool takeFrame(QPVEncodedVideoFrame *frame);
    int queued() const;

    OcelleDecoder m_decoder;
    OcelleDecodeSession *const m_session; // not owned, outlives the worker's thread
    std::atomic<bool> m_silenced { false };

    mutable QMutex m_mutex; // guards all below; never held while calling out
    Queue m_queue;          // oldest first, at most m_depth
    int m_depth = 20;
    int m_threshold = 0;     // low-water mark: below it, needData()
    bool m_flushing = false; // what is queued is to be discarded, and nothing taken
    QVideoEncoderSettings m_settings;
    std::shared_ptr<Veltra::Ocelle::VideoDecoder> m_pendingDecoder;
    bool m_requested = false; // to decode
    bool m_applied = false;   // the request that was acted on
    bool m_active = false;    // the decoder is starting or active
};
