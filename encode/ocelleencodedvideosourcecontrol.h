// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <palaver/qpvencodedvideosourcecontrol.h>

class OcelleEncodeSession;

/*!
 * Lets an application attach a sink to the encode session.
 *
 * Threads: any thread.
 * Owner:   OcelleEncodeService; goes before the session. Sinks are borrowed.
 */
class OcelleEncodedVideoSourceControl : public QPVEncodedVideoSourceControl
{
    Q_OBJECT
public:
    OcelleEncodedVideoSourceControl(OcelleEncodeSession *session, QObject *parent);

    bool addSink(QPVSink *sink) override;
    bool removeSink(QPVSink *sink) override;

private:
    OcelleEncodeSession *const m_session; // not owned
};
