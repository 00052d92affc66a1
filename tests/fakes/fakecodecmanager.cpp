// SPDX-License-Identifier: BSD-3-Clause
#include "fakecodecmanager.h"

#include "calllog.h"
#include "fakedecoderscript.h"
#include "fakeencoderscript.h"
#include "fakevideodecoder.h"
#include "fakevideoencoder.h"

#include <QString>

#include <algorithm>

using namespace Veltra::Ocelle;

namespace {

void log(const char *name, CodecType type, bool flag)
{
    CallLog::instance().add(QStringLiteral("codecs"), QStringLiteral("%1(%2, %3)")
                                                              .arg(QLatin1String(name))
                                                              .arg(static_cast<int>(type))
                                                              .arg(static_cast<int>(flag)));
}

} // namespace

bool FakeCodecManager::prepare()
{
    CallLog::instance().add(QStringLiteral("codecs"), QStringLiteral("prepare()"));
    return true;
}

bool FakeCodecManager::isEncoderSupported(CodecType type, bool flag)
{
    log("isEncoderSupported", type, flag);
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_encoderTypes.count(type) > 0;
}

bool FakeCodecManager::isDecoderSupported(CodecType type, bool flag)
{
    log("isDecoderSupported", type, flag);
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_decoderTypes.count(type) > 0;
}

std::shared_ptr<VideoEncoder> FakeCodecManager::createVideoEncoder(CodecType type, int flags)
{
    log("createVideoEncoder", type, flags != 0);
    std::unique_lock<std::mutex> lock(m_mutex);
    const std::shared_ptr<FakeEncoderScript> script = m_encoderScript;
    if (!script || script->createFails)
        return {};
    if (script->onCreate) {
        lock.unlock();
        script->onCreate();
        lock.lock();
    }
    const auto encoder =
            std::make_shared<FakeVideoEncoder>(static_cast<int>(m_encoders.size()) + 1, script);
    m_encoders.push_back(encoder);
    return encoder;
}

std::shared_ptr<VideoDecoder> FakeCodecManager::createVideoDecoder(CodecType type, int flags)
{
    log("createVideoDecoder", type, flags != 0);
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_decoderScript || m_decoderScript->createFails)
        return {};
    const auto decoder = std::make_shared<FakeVideoDecoder>(static_cast<int>(m_decoders.size()) + 1,
                                                            m_decoderScript);
    m_decoders.push_back(decoder);
    return decoder;
}

std::vector<VideoCodecInfo> FakeCodecManager::getVideoCodecs()
{
    CallLog::instance().add(QStringLiteral("codecs"), QStringLiteral("getVideoCodecs()"));
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_codecs;
}

void FakeCodecManager::add(const std::string &name, CodecType type, bool isEncoder,
                           int maxInstances, bool isHardwareAccelerated)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_codecs.push_back({ type, isEncoder, name, 0, maxInstances, isHardwareAccelerated });
}

void FakeCodecManager::supportEncoder(CodecType type)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_encoderTypes.insert(type);
}

std::shared_ptr<FakeEncoderScript> FakeCodecManager::giveEncoders()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_encoderScript)
        m_encoderScript = std::make_shared<FakeEncoderScript>();
    return m_encoderScript;
}

std::shared_ptr<FakeVideoEncoder> FakeCodecManager::encoder() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_encoders.empty() ? nullptr : m_encoders.back().lock();
}

int FakeCodecManager::heldEncoders() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(std::count_if(m_encoders.begin(), m_encoders.end(),
                                          [](const auto &encoder) { return !encoder.expired(); }));
}

void FakeCodecManager::supportDecoder(CodecType type)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_decoderTypes.insert(type);
}

std::shared_ptr<FakeDecoderScript> FakeCodecManager::giveDecoders()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_decoderScript)
        m_decoderScript = std::make_shared<FakeDecoderScript>();
    return m_decoderScript;
}

std::shared_ptr<FakeVideoDecoder> FakeCodecManager::decoder() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_decoders.empty() ? nullptr : m_decoders.back().lock();
}

int FakeCodecManager::heldDecoders() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(std::count_if(m_decoders.begin(), m_decoders.end(),
                                          [](const auto &decoder) { return !decoder.expired(); }));
}

int FakeCodecManager::madeDecoders() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(m_decoders.size());
}
