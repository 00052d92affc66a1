// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleencodecontrol.h"

#include "ocelleencodesession.h"

OcelleEncodeControl::OcelleEncodeControl(OcelleEncodeSession *session)
    : QPVEncodeControl(session)
    , m_session(session)
{
}

QStringList OcelleEncodeControl::supportedCodecs(bool flag) const
{
    return m_session->supportedCodecs(flag);
}

QList<QVideoFrame::PixelFormat> OcelleEncodeControl::supportedPixelFormats() const
{
    return m_session->supportedPixelFormats();
}

QPVEncoder::Status OcelleEncodeControl::status() const
{
    return m_session->status();
}

bool OcelleEncodeControl::start(const QVideoSurfaceFormat &format)
{
    return m_session->startEncoder(format);
}

void OcelleEncodeControl::drain()
{
    qCritical("OcelleEncodeControl::drain is not implemented");
}

void OcelleEncodeControl::flush()
{
    qCritical("OcelleEncodeControl::flush is not implemented");
}

void OcelleEncodeControl::stop()
{
    m_session->stop();
}

bool OcelleEncodeControl::encode(const QVideoFrame &frame)
{
    return m_session->encode(frame);
}
