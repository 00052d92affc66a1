// SPDX-License-Identifier: BSD-3-Clause
#include "fakevideoencoder.h"

#include "calllog.h"
#include "fakeencoderscript.h"

#include <utility>

using namespace Veltra::Ocelle;

FakeVideoEncoder::FakeVideoEncoder(int number, std::shared_ptr<FakeEncoderScript> script)
    : m_script(std::move(script))
    , m_object(QStringLiteral("encoder %1").arg(number))
{
}

FakeVideoEncoder::~FakeVideoEncoder()
{
    m_script->destroyGate.pass();
    if (m_script->onDestroy)
        m_script->onDestroy(*this);
    log(QStringLiteral("destroyed"));
}

bool FakeVideoEncoder::initialize(EncoderConfig config)
{
    log(QStringLiteral("initialize(codec %1, %2x%3, stride %4, lines %5, %6 bit/s, %7 fps)")
                .arg(config.codecType)
                .arg(config.width)
                .arg(config.height)
                .arg(config.stride)
                .arg(config.sliceHeight)
                .arg(config.bitrate)
                .arg(config.frameRate));
    m_script->initializeGate.pass();
    std::lock_guard<std::mutex> lock(m_mutex);
    m_config = config;
    return !m_script->initializeFails;
}

bool FakeVideoEncoder::encode(std::shared_ptr<YCbCrFrame> frame, bool keyFrame)
{
    log(QStringLiteral("encode(%1%2)")
                .arg(frame->timestamp)
                .arg(keyFrame ? QStringLiteral(", key") : QString()));
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_picture = *frame;
    }
    return take(std::move(frame));
}

bool FakeVideoEncoder::setBitrate(int bitrate)
{
    log(QStringLiteral("setBitrate(%1)").arg(bitrate));
    return true;
}

bool FakeVideoEncoder::setParameter(VideoEncoderParameter parameter, const std::string &value)
{
    log(QStringLiteral("setParameter(%1, %2)")
                .arg(static_cast<int>(parameter))
                .arg(QString::fromStdString(value)));
    return true;
}

bool FakeVideoEncoder::encodeRGB(std::shared_ptr<RGBFrame> frame, bool keyFrame)
{
    log(QStringLiteral("encodeRGB(%1%2)")
                .arg(frame->timestamp)
                .arg(keyFrame ? QStringLiteral(", key") : QString()));
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_rgbPicture = *frame;
    }
    return take(std::move(frame));
}

bool FakeVideoEncoder::deliver(const std::string &data, unsigned long timestamp, FrameType type)
{
    std::string buffer = data; // lent, and gone after the call
    return tell([&](VideoEncoderListener *listener) {
        listener->onEncodedFrame(reinterpret_cast<unsigned char *>(&buffer[0]), buffer.size(),
                                 timestamp, type);
    });
}

bool FakeVideoEncoder::fail(const std::string &message)
{
    return tell([&](VideoEncoderListener *listener) { listener->onEncoderError(message); });
}

bool FakeVideoEncoder::endStream()
{
    return tell([](VideoEncoderListener *listener) { listener->onEncoderEOS(); });
}

bool FakeVideoEncoder::changeParameter(VideoEncoderParameter parameter, const std::string &value)
{
    return tell([&](VideoEncoderListener *listener) {
        listener->onEncoderParameterChanged(parameter, value);
    });
}

bool FakeVideoEncoder::hasListener()
{
    return tell([](VideoEncoderListener *) {});
}

EncoderConfig FakeVideoEncoder::config() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_config;
}

YCbCrFrame FakeVideoEncoder::picture() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_picture;
}

RGBFrame FakeVideoEncoder::rgbPicture() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_rgbPicture;
}

void FakeVideoEncoder::dropPictures()
{
    std::vector<std::shared_ptr<void>> dropped; // they may call out
    std::lock_guard<std::mutex> lock(m_mutex);
    m_pictures.swap(dropped);
}

void FakeVideoEncoder::log(const QString &what) const
{
    CallLog::instance().add(m_object, what);
}

bool FakeVideoEncoder::take(std::shared_ptr<void> picture)
{
    m_script->encodeGate.pass();
    if (m_script->keepsPictures) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_pictures.push_back(std::move(picture));
    }
    if (m_script->onEncode)
        m_script->onEncode(*this);
    return !m_script->encodeFails;
}

template <typename Function>
bool FakeVideoEncoder::tell(Function function)
{
    std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (!m_listener)
        return false;
    function(m_listener);
    return true;
}
