#pragma once

#include <ocelle/codecmanager.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

/*!
 * A codec manager with a scripted list and no codec to give. It is called "codecs" in the log.
 *
 * Threads: any thread.
 */
class FakeCodecManager : public Veltra::Ocelle::CodecManager
{
public:
    bool prepare() override;
    bool isEncoderSupported(Veltra::Ocelle::CodecType type, bool flag) override;
    bool isDecoderSupported(Veltra::Ocelle::CodecType type, bool flag) override;
    std::shared_ptr<Veltra::Ocelle::VideoEncoder> createVideoEncoder(Veltra::Ocelle::CodecType type,
                                                                     int flags) override;
    std::shared_ptr<Veltra::Ocelle::VideoDecoder> createVideoDecoder(Veltra::Ocelle::CodecType type,
                                                                     int flags) override;
    std::vector<Veltra::Ocelle::VideoCodecInfo> getVideoCodecs() override;

    /*! Adds a codec at the end of the list. */
    void add(const std::string &name, Veltra::Ocelle::CodecType type, bool isEncoder,
             int maxInstances = 1, bool isHardwareAccelerated = false);

private:
    mutable std::mutex m_mutex; // guards m_codecs
    std::vector<Veltra::Ocelle::VideoCodecInfo> m_codecs;
};
