// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

namespace Veltra {
namespace Ocelle {

constexpr int MaxPictureSide = 16384; // pixels

/*! How the pictures of a decoder reach its listener. */
enum class DecoderOutput {
    Buffer, // onDecodedGraphicBuffer()
    YCbCr,  // onDecodedYCbCrFrame()
};

/*! How the work of a decoder is spread over threads. */
enum class DecoderThreads {
    LowDelay,   // over the parts of one picture, which comes out as soon as it can
    Throughput, // over several pictures, which come out that much later
};

/*! What is the same for all decoders of a process. */
struct DecoderSettings
{
    DecoderOutput output = DecoderOutput::Buffer;
    DecoderThreads threads = DecoderThreads::LowDelay;
    std::int64_t maxPixels = std::int64_t(MaxPictureSide) * MaxPictureSide; // of one picture

    /*!
     * As two texts ask for, "buffer" or "ycbcr" and "delay" or "throughput"; null or empty for the
     * first of these. Anything else is told of on standard error and stands for the first too.
     */
    static DecoderSettings fromTexts(const char *output, const char *threads);
};

} // namespace Ocelle
} // namespace Veltra
