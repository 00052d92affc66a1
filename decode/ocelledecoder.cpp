// SPDX-License-Identifier: BSD-3-Clause
#include "ocelledecoder.h"

#include "ocelledecodelog.h"

#include <QMutexLocker>
#include <QSize>
#include <QVideoEncoderSettings>

#include <palaver/qpvencodedvideoframe.h>

#include <cstdlib>
#include <cstring>
#include <utility>

using Veltra::Ocelle::CodecType;
using Veltra::Ocelle::DecoderConfig;
using Veltra::Ocelle::FrameType;
using Veltra::Ocelle::VideoDecoder;

namespace {

constexpr std::int32_t FrameRate = 30; // frames per second, whatever the settings say

} // namespace

OcelleDecoder::OcelleDecoder(QObject *parent)
    : QObject(parent)
{
}

OcelleDecoder::~OcelleDecoder()
{
    if (m_status == QPVDecoder::ActiveStatus && m_decoder) {
        m_decoder->flush();
        m_decoder->stop();
    }
}

CodecType OcelleDecoder::codecType(const QString &mimeType)
{
    if (mimeType == QLatin1String("video/h264"))
        return CodecType::H264;
    if (mimeType == QLatin1String("video/h265"))
        return CodecType::H265;
    if (mimeType == QLatin1String("video/vp8"))
        return CodecType::VP8;
    if (mimeType == QLatin1String("video/vp9"))
        return CodecType::VP9;
    qCWarning(qLcDecode) << "Unknown decoder" << mimeType;
    return CodecType::Unknown;
}

QPVDecoder::Status OcelleDecoder::status() const
{
    return m_status;
}

void OcelleDecoder::kill()
{
    Decoder decoder;
    bool changed;
    {
        QMutexLocker locker(&m_decoderMutex);
        if (!m_decoder)
            return;
        decoder.swap(m_decoder);
        changed = m_status.exchange(QPVDecoder::UnloadedStatus) != QPVDecoder::UnloadedStatus;
    }
    if (changed)
        emit statusChanged(QPVDecoder::UnloadedStatus);
}

void OcelleDecoder::setStatus(QPVDecoder::Status status)
{
    if (m_status.exchange(status) != status)
        emit statusChanged(status);
}

bool OcelleDecoder::load(Decoder decoder)
{
    if (!decoder) {
        setStatus(QPVDecoder::UnloadedStatus);
        return false;
    }
    if (m_status != QPVDecoder::UnloadedStatus && m_status != QPVDecoder::StandbyStatus)
        return false;
    Decoder before = decoder;
    {
        QMutexLocker locker(&m_decoderMutex);
        m_decoder.swap(before);
    }
    before.reset(); // with no lock held
    return setStatusWhileHolding(decoder, QPVDecoder::LoadedStatus);
}

bool OcelleDecoder::start(const QVideoEncoderSettings &settings)
{
    if (m_status != QPVDecoder::LoadedStatus)
        return false;
    const Decoder decoder = heldDecoder();
    DecoderConfig config {};
    config.codecType = codecType(settings.codec());
    config.width = settings.resolution().width();
    config.height = settings.resolution().height();
    config.frameRate = FrameRate;
    if (!decoder || !decoder->initialize(config))
        return false;
    setStatusWhileHolding(decoder, QPVDecoder::StartingStatus); // killed meanwhile is no failure
    return true;
}

bool OcelleDecoder::decode(const QPVEncodedVideoFrame &frame)
{
    const Decoder decoder = heldDecoder();
    if (!decoder)
        return false;
    if (m_status == QPVDecoder::StartingStatus)
        setStatusWhileHolding(decoder, QPVDecoder::ActiveStatus);
    if (m_status != QPVDecoder::ActiveStatus)
        return false;

    const QByteArray payload = frame.data();
    const auto size = static_cast<std::size_t>(payload.size());
    auto *const block = static_cast<unsigned char *>(std::malloc(size));
    if (!block)
        return false;
    std::memcpy(block, payload.constData(), size);
    const QPVEncodedVideoFrame::MetaData meta = frame.meta();
    const FrameType type =
            meta.frameType == QPVEncodedVideoFrame::KeyFrame ? FrameType::Key : FrameType::Delta;
    // The block is the library's from here on, accepted or not.
    return decoder->decode(block, size, meta.timestamp, type, std::free, block);
}

void OcelleDecoder::flush()
{
    finish(&VideoDecoder::flush);
}

void OcelleDecoder::drain()
{
    finish(&VideoDecoder::drain);
}

OcelleDecoder::Decoder OcelleDecoder::heldDecoder() const
{
    QMutexLocker locker(&m_decoderMutex);
    return m_decoder;
}

/*! False, with nothing changed, where \a decoder has been killed meanwhile. */
bool OcelleDecoder::setStatusWhileHolding(const Decoder &decoder, QPVDecoder::Status status)
{
    bool changed;
    {
        QMutexLocker locker(&m_decoderMutex);
        if (m_decoder != decoder)
            return false;
        changed = m_status.exchange(status) != status;
    }
    if (changed)
        emit statusChanged(status);
    return true;
}

/*! Takes a started decoder down by way of \a ending, its flush or its drain. */
void OcelleDecoder::finish(void (VideoDecoder::*ending)())
{
    Decoder decoder = heldDecoder();
    if (m_status > QPVDecoder::StandbyStatus && decoder &&
        setStatusWhileHolding(decoder, QPVDecoder::StoppingStatus)) {
        // A killed one is called no more: while the status was told, or inside of the ending.
        if (heldDecoder() == decoder)
            (decoder.get()->*ending)();
        if (heldDecoder() == decoder)
            decoder->stop();
        {
            QMutexLocker locker(&m_decoderMutex);
            if (m_decoder == decoder)
                m_decoder.reset(); // not the last reference
        }
        decoder.reset();
    }
    setStatus(QPVDecoder::UnloadedStatus);
}
