#pragma once

#include <ocelle/codecmanager.h>
#include <ocelle/videoencoder.h>

#include <vector>

/*!
 * An encoder that has its unit ready: what is left is what everybody else spends on it.
 *
 * Threads: calls its listener on the thread of encode().
 */
class ReadyEncoder : public Veltra::Ocelle::VideoEncoder
{
public:
    bool initialize(Veltra::Ocelle::EncoderConfig) override { return true; }
    bool encode(std::shared_ptr<Veltra::Ocelle::YCbCrFrame> frame, bool keyFrame) override;
    bool setBitrate(int) override { return true; }
    bool setParameter(Veltra::Ocelle::VideoEncoderParameter, const std::string &) override
    {
        return true;
    }
    bool encodeRGB(std::shared_ptr<Veltra::Ocelle::RGBFrame>, bool) override { return false; }

private:
    std::vector<unsigned char> m_unit = std::vector<unsigned char>(4000);
};

/*! Offers ready encoders of H.264. */
class ReadyCodecManager : public Veltra::Ocelle::CodecManager
{
public:
    bool prepare() override { return true; }
    bool isEncoderSupported(Veltra::Ocelle::CodecType type, bool) override;
    bool isDecoderSupported(Veltra::Ocelle::CodecType, bool) override { return false; }
    std::shared_ptr<Veltra::Ocelle::VideoEncoder> createVideoEncoder(Veltra::Ocelle::CodecType,
                                                                     int) override;
    std::shared_ptr<Veltra::Ocelle::VideoDecoder> createVideoDecoder(Veltra::Ocelle::CodecType,
                                                                     int) override;
    std::vector<Veltra::Ocelle::VideoCodecInfo> getVideoCodecs() override;
};
