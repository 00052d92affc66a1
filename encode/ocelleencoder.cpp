// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleencoder.h"

#include "ocelleencodelog.h"
#include "ocelleinputframe.h"
#include "ocelleinputrgbframe.h"

#include <QVariant>
#include <QVideoFrame>

#include <ocelle/videoencoder.h>

#include <limits>
#include <utility>

using Veltra::Ocelle::CodecType;
using Veltra::Ocelle::EncoderConfig;
using Veltra::Ocelle::VideoEncoder;
using Veltra::Ocelle::VideoEncoderParameter;

namespace {

constexpr int DefaultFrameRate = 30;    // frames per second
constexpr int DefaultBitRate = 1000000; // bits per second
constexpr qint64 FullTurn = 360;        // degrees

int wholeFrameRate(qreal rate)
{
    if (!(rate >= 1)) // not a number, too
        return DefaultFrameRate;
    return static_cast<int>(qMin<qreal>(rate, std::numeric_limits<int>::max()));
}

/*! \a degrees and one turn, without the whole turns; below -360 that stays negative. */
int rotation(const QVariant &degrees)
{
    if (!degrees.isValid() || !degrees.canConvert<int>())
        return 0;
    return static_cast<int>((degrees.toInt() + FullTurn) % FullTurn);
}

QString boolText(const QVariant &value)
{
    const bool isSet = value.isValid() && value.canConvert<bool>() && value.toBool();
    return isSet ? QStringLiteral("true") : QStringLiteral("false");
}

} // namespace

OcelleEncoder::OcelleEncoder(QObject *parent)
    : QObject(parent)
{
}

OcelleEncoder::~OcelleEncoder() = default;

CodecType OcelleEncoder::codecType(const QString &codec)
{
    if (codec == QLatin1String("video/h264"))
        return CodecType::H264;
    if (codec == QLatin1String("video/h265"))
        return CodecType::H265;
    if (codec == QLatin1String("video/vp8"))
        return CodecType::VP8;
    if (codec == QLatin1String("video/vp9"))
        return CodecType::VP9;
    qCWarning(qLcEncode) << "Unknown encoder" << codec;
    return CodecType::Unknown;
}

bool OcelleEncoder::load(std::shared_ptr<VideoEncoder> encoder)
{
    if (!encoder) {
        m_encoder.reset();
        setStatus(QPVEncoder::UnloadedStatus);
        return false;
    }
    if (status() != QPVEncoder::UnloadedStatus)
        return false;
    m_encoder = std::move(encoder);
    setStatus(QPVEncoder::LoadedStatus);
    return true;
}

bool OcelleEncoder::start(const QVideoEncoderSettings &settings)
{
    if (status() != QPVEncoder::LoadedStatus)
        return false;
    m_settings = settings;
    setStatus(QPVEncoder::StartingStatus);
    return true;
}

bool OcelleEncoder::changeSettings(const QVideoEncoderSettings &settings)
{
    if (status() < QPVEncoder::StartingStatus)
        return false;
    m_settings = settings;
    if (status() == QPVEncoder::ActiveStatus)
        m_encoder->setBitrate(m_settings.bitRate());
    return true;
}

bool OcelleEncoder::encode(const QVideoFrame &frame)
{
    if (status() < QPVEncoder::StartingStatus)
        return false;
    if (frame.pixelFormat() == QVideoFrame::Format_RGB32)
        return encodeAs(std::make_shared<OcelleInputRGBFrame>(frame), &VideoEncoder::encodeRGB);
    return encodeAs(std::make_shared<OcelleInputFrame>(frame), &VideoEncoder::encode);
}

/*! The picture is mapped before it configures the encoder: only then does it know its stride. */
template <typename Picture, typename Encode>
bool OcelleEncoder::encodeAs(std::shared_ptr<Picture> picture, Encode operation)
{
    const QVideoFrame &frame = picture->frame();
    if (status() == QPVEncoder::StartingStatus && !startUp(frame)) {
        qCWarning(qLcEncode) << "Coundn't start the encoder";
        return false;
    }
    const bool keyFrame = frame.metaData(QStringLiteral("KeyFrame")).toBool();
    if (keyFrame)
        qCDebug(qLcEncode) << "Requesting key frame";
    return ((*m_encoder).*operation)(std::move(picture), keyFrame);
}

/*! Configures the encoder for \a frame, which is mapped. A failure leaves all for another try. */
bool OcelleEncoder::startUp(const QVideoFrame &frame)
{
    const CodecType codec = codecType(m_settings.codec());
    setParameters();
    EncoderConfig config {};
    config.codecType = static_cast<std::int32_t>(codec);
    config.width = frame.width();
    config.height = frame.height();
    config.stride = frame.bytesPerLine(0);
    config.sliceHeight = frame.height();
    config.bitrate = m_settings.bitRate() > 0 ? m_settings.bitRate() : DefaultBitRate;
    config.frameRate = wholeFrameRate(m_settings.frameRate());
    if (!m_encoder->initialize(config))
        return false;
    setStatus(QPVEncoder::ActiveStatus);
    return true;
}

void OcelleEncoder::setParameters()
{
    const QVariantMap options = m_settings.encodingOptions();
    const QString rotate = QString::number(rotation(options.value(QStringLiteral("rotate"))));
    const QString mirrorV = boolText(options.value(QStringLiteral("mirrorV")));
    const QString mirrorH = boolText(options.value(QStringLiteral("mirrorH")));
    const bool constant = m_settings.encodingMode() == QMultimedia::ConstantBitRateEncoding;
    const QString mode = constant ? QStringLiteral("constant") : QStringLiteral("variable");
    qCDebug(qLcEncode).noquote() << QStringLiteral(
                                            "options: rotation=%1 mirrorV=%2 mirrorH=%3 bitrate=%4")
                                            .arg(rotate, mirrorV, mirrorH, mode);
    m_encoder->setParameter(VideoEncoderParameter::RotationParameter, rotate.toStdString());
    m_encoder->setParameter(VideoEncoderParameter::MirrorVerticalParameter, mirrorV.toStdString());
    m_encoder->setParameter(VideoEncoderParameter::BitrateModeParameter, mode.toStdString());
}

void OcelleEncoder::flush()
{
    release();
}

void OcelleEncoder::drain()
{
    release();
}

void OcelleEncoder::release()
{
    if (status() <= QPVEncoder::LoadedStatus)
        return;
    setStatus(QPVEncoder::StoppingStatus);
    m_encoder.reset();
    setStatus(QPVEncoder::UnloadedStatus);
}

QPVEncoder::Status OcelleEncoder::status() const
{
    return m_status;
}

void OcelleEncoder::setStatus(QPVEncoder::Status status)
{
    if (m_status.exchange(status) != status)
        emit statusChanged(status);
}
