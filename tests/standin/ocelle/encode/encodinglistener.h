// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/videoencoder.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/*!
 * Keeps what an encoder puts out.
 *
 * Threads: one; the encoders under test call back on the thread that calls them.
 */
class EncodingListener : public Veltra::Ocelle::VideoEncoderListener
{
public:
    struct Unit
    {
        std::vector<std::uint8_t> data;
        std::uint64_t timestamp;
        Veltra::Ocelle::FrameType type;
    };

    void onEncodedFrame(unsigned char *data, unsigned long size, unsigned long timestamp,
                        Veltra::Ocelle::FrameType type) override;
    void onEncoderParameterChanged(Veltra::Ocelle::VideoEncoderParameter parameter,
                                   const std::string &value) override;
    void onEncoderError(const std::string &message) override;
    void onEncoderEOS() override;

    /*! Indices of the key frames. */
    std::vector<int> keyFrames() const;
    /*! Bits per second of units \a from to \a to, of which there are \a frameRate in a second. */
    double bitrate(std::size_t from, std::size_t to, int frameRate = 30) const;

    std::vector<Unit> units;
    std::vector<std::string> errors;
    int otherCalls = 0;
    std::function<void()> onCall; // made within every unit and error, if set
};
