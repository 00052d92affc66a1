// SPDX-License-Identifier: BSD-3-Clause
#pragma once

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
