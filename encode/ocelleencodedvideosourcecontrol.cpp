// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleencodedvideosourcecontrol.h"

#include "ocelleencodesession.h"

OcelleEncodedVideoSourceControl::OcelleEncodedVideoSourceControl(OcelleEncodeSession *session,
                                                                 QObject *parent)
    : QPVEncodedVideoSourceControl(parent)
    , m_session(session)
{
}

bool OcelleEncodedVideoSourceControl::addSink(QPVSink *sink)
{
    return m_session->addSink(sink);
}

bool OcelleEncodedVideoSourceControl::removeSink(QPVSink *sink)
{
    return m_session->removeSink(sink);
}
