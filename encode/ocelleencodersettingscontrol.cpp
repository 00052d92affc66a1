// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleencodersettingscontrol.h"

#include "ocelleencodesession.h"

OcelleEncoderSettingsControl::OcelleEncoderSettingsControl(OcelleEncodeSession *session,
                                                           QObject *parent)
    : QVideoEncoderSettingsControl(parent)
    , m_session(session)
{
}

QList<QSize> OcelleEncoderSettingsControl::supportedResolutions(const QVideoEncoderSettings &,
                                                                bool *continuous) const
{
    if (continuous)
        *continuous = false;
    return m_session->supportedResolutions();
}

QList<qreal> OcelleEncoderSettingsControl::supportedFrameRates(const QVideoEncoderSettings &,
                                                               bool *continuous) const
{
    if (continuous)
        *continuous = false;
    return m_session->supportedFrameRates();
}

QStringList OcelleEncoderSettingsControl::supportedVideoCodecs() const
{
    return m_session->supportedCodecs(false);
}

QString OcelleEncoderSettingsControl::videoCodecDescription(const QString &codec) const
{
    if (codec == QLatin1String("video/h264"))
        return QStringLiteral("H.264 compression");
    if (codec == QLatin1String("video/vp8"))
        return QStringLiteral("VP8 compression");
    if (codec == QLatin1String("video/vp9"))
        return QStringLiteral("VP9 compression");
    return QString();
}

QVideoEncoderSettings OcelleEncoderSettingsControl::videoSettings() const
{
    return m_session->videoSettings();
}

void OcelleEncoderSettingsControl::setVideoSettings(const QVideoEncoderSettings &settings)
{
    m_session->setVideoSettings(settings);
}
