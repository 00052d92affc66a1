// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "doubleunit.h"

#include <ocelle/videoencoder.h>

#include <atomic>

/*!
 * An encoder of the double: what it keeps of a test picture is its number and its bars' colours.
 *
 * Threads: operations one at a time; the listener is called within encode().
 */
class DoubleEncoder : public Veltra::Ocelle::VideoEncoder
{
public:
    explicit DoubleEncoder(Veltra::Ocelle::CodecType type);
    ~DoubleEncoder() override;

    static int alive();

    bool initialize(Veltra::Ocelle::EncoderConfig config) override;
    bool encode(std::shared_ptr<Veltra::Ocelle::YCbCrFrame> frame, bool keyFrame) override;
    bool setBitrate(int bitrate) override;
    bool setParameter(Veltra::Ocelle::VideoEncoderParameter parameter,
                      const std::string &value) override;
    bool encodeRGB(std::shared_ptr<Veltra::Ocelle::RGBFrame> frame, bool keyFrame) override;

private:
    bool mayEncode(const Veltra::Ocelle::YCbCrFrame &frame);
    void putOut(DoubleUnit unit, std::int64_t timestamp, bool isKey);

    static std::atomic<int> s_alive;
    const Veltra::Ocelle::CodecType m_type;
    Veltra::Ocelle::EncoderConfig m_config {};
    bool m_isInitialized = false;
    bool m_isBroken = false;
    bool m_hasKey = false;
    int m_rotation = 0;
    bool m_isMirrored = false;
};
