// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/codecmanager.h>

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

class FakeDecoderScript;
class FakeEncoderScript;
class FakeVideoDecoder;
class FakeVideoEncoder;

/*!
 * A codec manager with a scripted list, that gives encoders and decoders where it has a script for
 * them. It is called "codecs" in the log.
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

    /*! Has an encoder of \a type supported, whatever the flag. */
    void supportEncoder(Veltra::Ocelle::CodecType type);
    /*! Gives encoders from now on, which follow the script. */
    std::shared_ptr<FakeEncoderScript> giveEncoders();
    /*! The encoder given last, while anybody holds it. */
    std::shared_ptr<FakeVideoEncoder> encoder() const;
    int heldEncoders() const;

    /*! Has a decoder of \a type supported, whatever the flag. */
    void supportDecoder(Veltra::Ocelle::CodecType type);
    /*! Gives decoders from now on, which follow the script. */
    std::shared_ptr<FakeDecoderScript> giveDecoders();
    /*! The decoder given last, while anybody holds it. */
    std::shared_ptr<FakeVideoDecoder> decoder() const;
    int heldDecoders() const;
    int madeDecoders() const;

private:
    mutable std::mutex m_mutex; // guards the members below
    std::vector<Veltra::Ocelle::VideoCodecInfo> m_codecs;
    std::set<Veltra::Ocelle::CodecType> m_encoderTypes; // supported
    std::shared_ptr<FakeEncoderScript> m_encoderScript;
    std::vector<std::weak_ptr<FakeVideoEncoder>> m_encoders; // given, oldest first
    std::set<Veltra::Ocelle::CodecType> m_decoderTypes;      // supported
    std::shared_ptr<FakeDecoderScript> m_decoderScript;
    std::vector<std::weak_ptr<FakeVideoDecoder>> m_decoders; // given, oldest first
};
