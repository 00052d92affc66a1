// SPDX-License-Identifier: BSD-3-Clause
#include "ocellevideosession.h"

#include "ocellevideooutput.h"

#include <QMutexLocker>

OcelleVideoSession::OcelleVideoSession(QObject *parent)
    : QObject(parent)
{
}

void OcelleVideoSession::setVideoOutput(OcelleVideoOutput *output)
{
    {
        QMutexLocker locker(&m_mutex);
        {
            QMutexLocker usersLocker(&m_usersMutex);
            m_videoOutput = output;
        }
        if (output)
            output->setMirrored(mirrorOutput());
    }
    waitUntilUnused();
}

bool OcelleVideoSession::mirrorOutput() const
{
    return false;
}

void OcelleVideoSession::stopVideoOutputNow()
{
    OcelleVideoOutput *output;
    {
        QMutexLocker locker(&m_usersMutex);
        output = m_videoOutput;
        ++m_videoOutputUsers;
    }
    if (output)
        output->stop();
    QMutexLocker locker(&m_usersMutex);
    if (--m_videoOutputUsers == 0)
        m_unused.wakeAll();
}

/*! Waits for the calls that may still be inside of an output that is attached no more. */
void OcelleVideoSession::waitUntilUnused()
{
    QMutexLocker locker(&m_usersMutex);
    while (m_videoOutputUsers > 0)
        m_unused.wait(&m_usersMutex);
}
