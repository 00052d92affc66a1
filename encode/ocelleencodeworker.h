// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ocelleencoder.h"
#include "ocelleframequeue.h"

#include <QEvent>
#include <QMutex>
#include <QObject>
#include <QVideoEncoderSettings>
#include <QVideoFrame>

#include <palaver/qpvencoder.h>

#include <memory>
#include <vector>

class OcelleEncodeSession;

/*!
 * Queues pictures and feeds them to the encoder on the thread named "EncodeWorker", where it also
 * starts and stops the encoder as requested.
 *
 * Threads: grouped below; built and destroyed on the application thread, moved to the worker
 *          thread in between. Requests take effect in the order in which they are made.
 * Owner:   OcelleEncodeSession, which deletes it after that thread has finished.
 * Units:   the queue's depth and threshold in pictures.
 * Errors:  enqueue() returns false for a picture it refuses; what fails later is reported once
 *          through OcelleEncodeSession::setError().
 */
class OcelleEncodeWorker : public QObject
{
    Q_OBJECT
public:
    class ChangeSettingsEvent;

    explicit OcelleEncodeWorker(OcelleEncodeSession *session);
    ~OcelleEncodeWorker();

    // Any thread
    /*! Stops what is running, after what is queued, and starts \a encoder. True. */
    bool start(std::shared_ptr<Veltra::Ocelle::VideoEncoder> encoder,
               const QVideoEncoderSettings &settings);
    /*! Has a start that is still to come use \a settings; false where none is. */
    bool changeStartSettings(const QVideoEncoderSettings &settings);
    /*! Hands \a settings to a running encoder; nothing where none is. True. */
    bool changeSettings(const QVideoEncoderSettings &settings);
    /*! False while the queue is full, and from a flush to the next start. */
    bool enqueue(const QVideoFrame &frame);
    void flush(); // stops, dropping what is queued
    void drain(); // stops after what is queued
    void eos();   // nothing
    void requestState(bool run);
    bool running() const; // as requested
    QPVEncoder::Status status() const;
    int depth() const; // capacity of the queue
    void setDepth(int depth);
    int threshold() const; // needData() is emitted when the queue gets shorter than that
    void setThreshold(int threshold);

signals:
    void statusChanged(QPVEncoder::Status status); // on the worker thread, no lock held
    void needData(unsigned int frameCountHint);    // no lock held
    /*! There is nothing to stop or to start, and nothing running; on the worker thread. */
    void idle();

public slots:
    void onStatusChanged(QPVEncoder::Status status); // worker thread
    /*! Takes the one step that leads from the state reached to the state asked for. */
    void applyState(); // worker thread

protected:
    bool event(QEvent *event) override; // worker thread

private:
    //  What the flags requested, applied and active say together; "-" is either.
    //
    //  0 0 0  idle                       1 0 0  a start is waiting for its turn
    //  1 1 0  starting, or start failed  - 0 1  stopping, in the end to start again where 1
    //  1 1 1  running
    enum class Step { None, Idle, Stop, Start };
    /*! What is let go on the worker thread: it may call out. */
    struct Unused
    {
        std::vector<std::shared_ptr<Veltra::Ocelle::VideoEncoder>> encoders;
        OcelleFrameQueue frames;
    };

    Step nextStep(std::shared_ptr<Veltra::Ocelle::VideoEncoder> *encoder);
    void start(std::shared_ptr<Veltra::Ocelle::VideoEncoder> encoder);
    void stop();
    void encode();
    void encodeQueued();
    void postIfFramesWait();
    int queued() const;
    bool takeFrame(QVideoFrame *frame);
    bool isFlushing() const;
    void setRequested(bool run);
    void postApplyState();
    bool isOver(quint32 run) const;
    void changeSettings(const ChangeSettingsEvent &event);
    void reportEncoderError();

    OcelleEncoder m_encoder;              // operations: worker thread
    OcelleEncodeSession *const m_session; // not owned, outlives the worker
    const QVideoFrame m_noFrame;          // worker thread; costs memory to make

    mutable QMutex m_mutex; // guards all below; never held while calling out or waiting
    OcelleFrameQueue m_queue;
    int m_passesPosted = 0; // events on their way that tell of waiting frames
    int m_depth = 20;
    int m_threshold = 0;
    bool m_isFlushing = false; // from flush() to the next start

    bool m_isRequested = false; // the state asked for
    bool m_isApplied = false;   // the state acted on
    bool m_isActive = false;    // the encoder is starting or active
    bool m_isLoading = false;   // within start(), m_settings not yet read

    quint32 m_run = 0; // number of starts so far, the one under way included

    // The start that is waiting for its turn
    bool m_isStartWaiting = false;
    std::shared_ptr<Veltra::Ocelle::VideoEncoder> m_pendingEncoder;
    QVideoEncoderSettings m_pendingSettings;

    QVideoEncoderSettings m_settings; // of the start under way or done, then the last changed ones
    Unused m_unused;                  // replaced or dropped before their turn came
};

/*! Carries changed settings to the worker thread. */
class OcelleEncodeWorker::ChangeSettingsEvent : public QEvent
{
public:
    static const QEvent::Type EventType = static_cast<QEvent::Type>(1001);

    /*! For the encoder of the start with the number \a run only; 0: for whatever encoder there is. */
    explicit ChangeSettingsEvent(const QVideoEncoderSettings &settings, quint32 run = 0);

    const QVideoEncoderSettings &settings() const { return m_settings; }
    quint32 run() const { return m_run; }

private:
    const QVideoEncoderSettings m_settings;
    const quint32 m_run;
};
