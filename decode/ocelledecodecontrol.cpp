// SPDX-License-Identifier: BSD-3-Clause
#include "ocelledecodecontrol.h"

#include "ocelledecodesession.h"

OcelleDecodeControl::OcelleDecodeControl(OcelleDecodeSession *session)
    : QPVDecodeControl(session)
    , m_session(session)
{
}

QStringList OcelleDecodeControl::supportedCodecs(bool flag) const
{
    return m_session->supportedCodecs(flag);
}

bool OcelleDecodeControl::isFormatSupported(const QVideoEncoderSettings &settings) const
{
    return m_session->isFormatSupported(settings);
}

bool OcelleDecodeControl::start(const QVideoEncoderSettings &settings)
{
    return m_session->startDecoder(settings);
}

QVideoEncoderSettings OcelleDecodeControl::codecSettings() const
{
    return m_session->codecSettings();
}

QVideoSurfaceFormat OcelleDecodeControl::outputFormat() const
{
    return m_outputFormat;
}

bool OcelleDecodeControl::decode(const QPVEncodedVideoFrame &frame)
{
    return m_session->decode(frame);
}

void OcelleDecodeControl::drain()
{
    m_session->drain();
}

void OcelleDecodeControl::flush()
{
    m_session->flush();
}

void OcelleDecodeControl::stop()
{
    m_session->stop();
}

QPVDecoder::Status OcelleDecodeControl::status() const
{
    return m_session->status();
}

void OcelleDecodeControl::setOutputFormat(const QVideoSurfaceFormat &format)
{
    m_outputFormat = format;
    emit outputFormatChanged(format);
}
