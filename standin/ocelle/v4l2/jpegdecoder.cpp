// SPDX-License-Identifier: BSD-3-Clause
#include "jpegdecoder.h"

#include "jpegscan.h"

#include <libyuv/convert.h>
#include <libyuv/planar_functions.h>
#include <turbojpeg.h>

#include <cstring>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr int NeutralChroma = 128;

/*! Makes 0 to 255 of a plane begin at 16 and span \a range. */
void limit(const JpegDecoder::Plane &plane, std::int32_t width, std::int32_t lines, unsigned range)
{
    constexpr unsigned half = 1U << 15; // to round
    const unsigned factor = (range * 65536U + 127U) / 255U;
    for (std::int32_t line = 0; line < lines; ++line) {
        std::uint8_t *const bytes = plane.data + std::ptrdiff_t(line) * plane.stride;
        for (std::int32_t i = 0; i < width; ++i)
            bytes[i] = std::uint8_t(16U + ((bytes[i] * factor + half) >> 16));
    }
}

} // namespace

JpegDecoder::JpegDecoder()
    : m_handle(tjInitDecompress())
{
}

JpegDecoder::~JpegDecoder()
{
    if (m_handle)
        tjDestroy(m_handle);
}

bool JpegDecoder::decode(const std::uint8_t *data, std::size_t size, std::int32_t width,
                         std::int32_t height, const Planes &planes)
{
    const JpegScan scan = JpegScan::of(data, size);
    if (!m_handle || scan.state != JpegScan::State::Complete)
        return false;
    size = scan.length;
    if (!isWanted(data, size, width, height))
        return false;

    // Its planes are padded to whole blocks, which only even sizes leave as they are.
    const bool isEven = width % 2 == 0 && height % 2 == 0;
    const bool isUsual = m_subsampling == TJSAMP_420 || m_subsampling == TJSAMP_422 ||
                         m_subsampling == TJSAMP_444 || m_subsampling == TJSAMP_GRAY;
    if (!isUsual)
        return decodeThroughRgb(data, size, planes); // which limits the range by itself
    const bool decoded = m_subsampling == TJSAMP_420 && isEven
                                 ? decodePlanes(data, size, planes)
                                 : decodeThroughScratch(data, size, planes);
    if (decoded)
        limitRange(planes);
    return decoded;
}

bool JpegDecoder::isWanted(const std::uint8_t *data, std::size_t size, std::int32_t width,
                           std::int32_t height)
{
    int colours = 0;
    const int result = tjDecompressHeader3(m_handle, data, static_cast<unsigned long>(size),
                                           &m_width, &m_height, &m_subsampling, &colours);
    const bool isColour = colours == TJCS_YCbCr || colours == TJCS_GRAY;
    return succeeded(result) && m_width == width && m_height == height && isColour;
}

bool JpegDecoder::decodePlanes(const std::uint8_t *data, std::size_t size, const Planes &planes)
{
    unsigned char *out[3] = { planes[0].data, planes[1].data, planes[2].data };
    int strides[3] = { planes[0].stride, planes[1].stride, planes[2].stride };
    return succeeded(tjDecompressToYUVPlanes(m_handle, data, static_cast<unsigned long>(size), out,
                                             m_width, strides, m_height, 0));
}

bool JpegDecoder::decodeThroughScratch(const std::uint8_t *data, std::size_t size,
                                       const Planes &planes)
{
    const int count = m_subsampling == TJSAMP_GRAY ? 1 : 3;
    int strides[3] = {};
    std::size_t offsets[3] = {};
    std::size_t total = 0;
    for (int i = 0; i < count; ++i) {
        strides[i] = tjPlaneWidth(i, m_width, m_subsampling);
        offsets[i] = total;
        total += std::size_t(strides[i]) * std::size_t(tjPlaneHeight(i, m_height, m_subsampling));
    }
    m_scratch.resize(total);
    unsigned char *in[3] = {};
    for (int i = 0; i < count; ++i)
        in[i] = m_scratch.data() + offsets[i];
    if (!succeeded(tjDecompressToYUVPlanes(m_handle, data, static_cast<unsigned long>(size), in,
                                           m_width, strides, m_height, 0)))
        return false;

    const Plane &y = planes[0];
    const Plane &u = planes[1];
    const Plane &v = planes[2];
    if (m_subsampling == TJSAMP_GRAY) {
        libyuv::CopyPlane(in[0], strides[0], y.data, y.stride, m_width, m_height);
        for (const Plane &chroma : { u, v })
            libyuv::SetPlane(chroma.data, chroma.stride, (m_width + 1) / 2, (m_height + 1) / 2,
                             NeutralChroma);
        return true;
    }
    const auto convert = m_subsampling == TJSAMP_420   ? libyuv::I420Copy
                         : m_subsampling == TJSAMP_422 ? libyuv::I422ToI420
                                                       : libyuv::I444ToI420;
    return convert(in[0], strides[0], in[1], strides[1], in[2], strides[2], y.data, y.stride,
                   u.data, u.stride, v.data, v.stride, m_width, m_height) == 0;
}

bool JpegDecoder::decodeThroughRgb(const std::uint8_t *data, std::size_t size, const Planes &planes)
{
    const int stride = m_width * 4;
    m_scratch.resize(std::size_t(stride) * std::size_t(m_height));
    return succeeded(tjDecompress2(m_handle, data, static_cast<unsigned long>(size),
                                   m_scratch.data(), m_width, stride, m_height, TJPF_BGRA, 0)) &&
           libyuv::ARGBToI420(m_scratch.data(), stride, planes[0].data, planes[0].stride,
                              planes[1].data, planes[1].stride, planes[2].data, planes[2].stride,
                              m_width, m_height) == 0;
}

void JpegDecoder::limitRange(const Planes &planes) const
{
    limit(planes[0], m_width, m_height, 219);
    limit(planes[1], (m_width + 1) / 2, (m_height + 1) / 2, 224);
    limit(planes[2], (m_width + 1) / 2, (m_height + 1) / 2, 224);
}

bool JpegDecoder::succeeded(int result) const
{
    return result == 0 || (tjGetErrorCode(m_handle) == TJERR_WARNING &&
                           std::strstr(tjGetErrorStr2(m_handle), "extraneous bytes"));
}

} // namespace Ocelle
} // namespace Veltra
