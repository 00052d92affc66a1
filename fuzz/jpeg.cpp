// SPDX-License-Identifier: BSD-3-Clause
// One picture of a Motion JPEG stream, whatever it is, into planes of a fixed or the picture's size.
#include "jpegdecoder.h"
#include "jpegscan.h"

#include <cstdlib>
#include <vector>

using namespace Veltra::Ocelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static JpegDecoder decoder; // as a camera does: what one picture leaves behind meets the next
    const JpegScan scan = JpegScan::of(data, size);
    if (scan.length > size)
        std::abort();
    const bool isSmall =
            scan.width > 0 && scan.width <= 512 && scan.height > 0 && scan.height <= 512;
    const std::int32_t width = isSmall ? scan.width : 64;
    const std::int32_t height = isSmall ? scan.height : 48;
    const std::int32_t chromaWidth = (width + 1) / 2;
    const std::size_t chromaSize = std::size_t(chromaWidth) * std::size_t((height + 1) / 2);
    // Exact sizes, so that a byte too many is found.
    std::vector<std::uint8_t> y(std::size_t(width) * std::size_t(height));
    std::vector<std::uint8_t> u(chromaSize);
    std::vector<std::uint8_t> v(chromaSize);
    const JpegDecoder::Planes planes {
        { { y.data(), width }, { u.data(), chromaWidth }, { v.data(), chromaWidth } }
    };
    if (decoder.decode(data, size, width, height, planes) &&
        scan.state != JpegScan::State::Complete)
        std::abort();
    return 0;
}
