#pragma once

#include <QMutex>
#include <QObject>

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
    OcelleVideoOutput *m_videoOutput = nullptr; // not owned; null without a surface

    // Guards m_videoOutput. Held while a picture is handed to the output and while the output is
    // stopped or mirrored, so that none is detached half-way; not recursive.
    QMutex m_mutex;
};
