// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMutex>
#include <QVideoEncoderSettings>

class QPVEncodeControl;
class QPVEncodedVideoFrame;
class QPVEncodedVideoSink;
class QPVSink;

/*!
 * Where encoded frames go: to the attached sink, if there is one, and to the control's signal.
 *
 * Threads: any thread. No two calls of a sink run at a time, and none once another thread's call
 *          that takes the sink away has returned. A sink may call back into this from within its
 *          own calls, and so may a slot that a frame is given to.
 * Owner:   OcelleEncodeSession. Sinks are borrowed.
 * Errors:  by result; the session words them.
 */
class OcelleEncodedVideoOutput
{
public:
    /*! Held around calls that belong together. */
    QMutex *mutex() { return &m_mutex; }

    /*! Replaces the sink, which is stopped and released. False where \a sink is of another kind. */
    bool attach(QPVSink *sink);
    /*! Takes \a sink away without a call on it; false where it is not the one attached. */
    bool detach(QPVSink *sink);

    /*! Whether the sink, if there is one, takes frames of \a settings. */
    bool accepts(const QVideoEncoderSettings &settings);
    /*! Starts the sink; false where it does not take the settings or does not start. */
    bool start(const QVideoEncoderSettings &settings);
    /*! Starts a sink that has not been told to since it was attached or finished. */
    bool startIfNew(const QVideoEncoderSettings &settings);
    void finish();
    void finishIfStarted();

    void deliver(const QPVEncodedVideoFrame &frame, QPVEncodeControl *control);

private:
    // Guards both, and is held during the sink's calls and while a frame is handed on, so that no
    // sink is replaced or stopped half-way. Recursive for the calls that come from within those.
    QMutex m_mutex { QMutex::Recursive };
    QPVEncodedVideoSink *m_sink = nullptr; // not owned
    bool m_isStarted = false;              // told to start, whatever it answered
};
