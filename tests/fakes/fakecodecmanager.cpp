#include "fakecodecmanager.h"

#include "calllog.h"

#include <QString>

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
    return false;
}

bool FakeCodecManager::isDecoderSupported(CodecType type, bool flag)
{
    log("isDecoderSupported", type, flag);
    return false;
}

std::shared_ptr<VideoEncoder> FakeCodecManager::createVideoEncoder(CodecType type, int flags)
{
    log("createVideoEncoder", type, flags != 0);
    return {};
}

std::shared_ptr<VideoDecoder> FakeCodecManager::createVideoDecoder(CodecType type, int flags)
{
    log("createVideoDecoder", type, flags != 0);
    return {};
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
