// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * Decodes the pictures of a camera's Motion JPEG stream to YU12, in the limited range of video: luma
 * 16 to 235, chroma 16 to 240. JPEG itself uses all values.
 *
 * Threads: one at a time.
 * Errors:  a picture that is damaged, cut off or of another size than expected gives false and may
 *          have been written in part. Bytes that do not belong there are skipped.
 */
class JpegDecoder
{
public:
    struct Plane
    {
        std::uint8_t *data;
        std::int32_t stride; // bytes per line
    };
    using Planes = std::array<Plane, 3>; // Y, Cb, Cr; chroma half as wide and high, rounded up

    JpegDecoder();
    ~JpegDecoder();
    JpegDecoder(const JpegDecoder &) = delete;
    JpegDecoder &operator=(const JpegDecoder &) = delete;

    /*! Fills \a planes, of \a width by \a height pixels. */
    bool decode(const std::uint8_t *data, std::size_t size, std::int32_t width, std::int32_t height,
                const Planes &planes);

private:
    bool isWanted(const std::uint8_t *data, std::size_t size, std::int32_t width,
                  std::int32_t height);
    bool decodePlanes(const std::uint8_t *data, std::size_t size, const Planes &planes);
    bool decodeThroughScratch(const std::uint8_t *data, std::size_t size, const Planes &planes);
    bool decodeThroughRgb(const std::uint8_t *data, std::size_t size, const Planes &planes);
    void limitRange(const Planes &planes) const;
    bool succeeded(int result) const;

    void *m_handle; // turbojpeg's, owned
    std::int32_t m_width = 0;
    std::int32_t m_height = 0;
    int m_subsampling = -1;
    std::vector<std::uint8_t> m_scratch;
};

} // namespace Ocelle
} // namespace Veltra
