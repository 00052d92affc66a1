// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMutex>
#include <QObject>
#include <QWaitCondition>

class OcelleVideoOutput;

/*!
 * Base of the sessions that show video: holds the current output under the mutex that keeps a
 * picture's delivery and the output's detaching apart.
 *
 * Threads: setVideoOutput() on the application thread; subclasses deliver on library threads.
 * Owner:   the service. The output is borrowed from the renderer control.
 */
class OcelleVideoSession : public QObject
{
    Q_OBJECT
public:
    explicit OcelleVideoSession(QObject *parent);

    /*! Attaches \a output, mirrored as mirrorOutput() says; null detaches. */
    void setVideoOutput(OcelleVideoOutput *output);

    /*! Whether the picture is to be shown mirrored. Called with the mutex held. */
    virtual bool mirrorOutput() const;

protected:
    /*! Stops the output without waiting for a delivery in progress. Any thread. */
    void stopVideoOutputNow();

    OcelleVideoOutput *m_videoOutput = nullptr; // not owned; null without a surface

    // Guards m_videoOutput. Held while a picture is handed to the output and while the output is
    // stopped or mirrored, so that none is detached half-way; not recursive.
    QMutex m_mutex;

private:
    void waitUntilUnused();

    // Guards m_videoOutputUsers, and m_videoOutput beside the mutex above; never held while calling
    // out. An output that is replaced is not let go before nobody uses it.
    QMutex m_usersMutex;
    QWaitCondition m_unused;
    int m_videoOutputUsers = 0; // calls to the output without the mutex above
};
