#include "ocellevideosession.h"

#include "ocellevideooutput.h"

#include <QMutexLocker>

OcelleVideoSession::OcelleVideoSession(QObject *parent)
    : QObject(parent)
{
}

void OcelleVideoSession::setVideoOutput(OcelleVideoOutput *output)
{
    QMutexLocker locker(&m_mutex);
    m_videoOutput = output;
    if (output)
        output->setMirrored(mirrorOutput());
}

bool OcelleVideoSession::mirrorOutput() const
{
    return false;
}
