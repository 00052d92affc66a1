// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/codecmanager.h>

namespace Veltra {
namespace Ocelle {

/*! What a codec is opened with. All positive and within the limits below. */
struct EncoderSettings
{
    int width = 0;      // pixels of the pictures it will get
    int height = 0;     // lines
    int frameRate = 30; // pictures per second
    int bitrate = 0;    // bits per second
    bool constantBitrate = false;
    int threads = 1;
};

constexpr int MaxEncoderFrameRate = 1000;     // pictures per second
constexpr int MinEncoderBitrate = 1000;       // bits per second
constexpr int MaxEncoderBitrate = 1000000000; // bits per second
constexpr int KeyFrameSeconds = 10;           // at the latest one key frame in that time

/*!
 * How many threads an encoder for pictures of that size uses: one where more would cost more than
 * they bring, else up to four of the machine's processors.
 */
int encoderThreads(int width, int height);

/*! The size that a codec without odd ones has instead. */
constexpr int roundedUpToEven(int pixels)
{
    return (pixels + 1) / 2 * 2;
}

/*! The name of a kind of codec for people, as "H.264". */
const char *codecName(CodecType type);

} // namespace Ocelle
} // namespace Veltra
