// SPDX-License-Identifier: BSD-3-Clause
#include "yuvpicture.h"

#include "croppedvideobuffer.h"

#include <libyuv.h>

#include <cmath>

namespace Tool {
namespace {

constexpr double MostDecibels = 99; // for pictures that are equal

} // namespace

YuvPicture::YuvPicture(const QVideoFrame &frame, const QRect &viewport)
{
    QVideoFrame part = cropped(frame, viewport);
    if (!part.map(QAbstractVideoBuffer::ReadOnly))
        return;
    m_size = part.size();
    m_data.resize(crOffset() + std::size_t(chromaWidth()) * std::size_t(chromaHeight()));
    std::uint8_t *const y = m_data.data();
    std::uint8_t *const cb = y + cbOffset();
    std::uint8_t *const cr = y + crOffset();
    int code = -1;
    if (part.pixelFormat() == QVideoFrame::Format_NV12)
        code = libyuv::NV12ToI420(part.bits(0), part.bytesPerLine(0), part.bits(1),
                                  part.bytesPerLine(1), y, m_size.width(), cb, chromaWidth(), cr,
                                  chromaWidth(), m_size.width(), m_size.height());
    else if (part.pixelFormat() == QVideoFrame::Format_YUV420P)
        code = libyuv::I420Copy(part.bits(0), part.bytesPerLine(0), part.bits(1),
                                part.bytesPerLine(1), part.bits(2), part.bytesPerLine(2), y,
                                m_size.width(), cb, chromaWidth(), cr, chromaWidth(),
                                m_size.width(), m_size.height());
    part.unmap();
    if (code != 0)
        *this = YuvPicture();
}

std::uint64_t YuvPicture::squaredErrorTo(const YuvPicture &other) const
{
    Q_ASSERT(m_size == other.m_size);
    const int width = int(m_data.size());
    return libyuv::ComputeSumSquareErrorPlane(m_data.data(), width, other.m_data.data(), width,
                                              width, 1);
}

QImage YuvPicture::image() const
{
    QImage image(m_size, QImage::Format_RGB32);
    const std::uint8_t *const y = m_data.data();
    if (isNull() || libyuv::I420ToARGB(y, m_size.width(), y + cbOffset(), chromaWidth(),
                                       y + crOffset(), chromaWidth(), image.bits(),
                                       image.bytesPerLine(), m_size.width(), m_size.height()) != 0)
        return QImage();
    return image;
}

double psnr(std::uint64_t squaredError, qint64 samples)
{
    constexpr double peak = 255;
    if (squaredError == 0)
        return MostDecibels;
    const double mean = double(squaredError) / double(samples);
    return std::min(MostDecibels, 10 * std::log10(peak * peak / mean));
}

QImage difference(const QImage &one, const QImage &other, int gain)
{
    QImage result(one.size(), QImage::Format_RGB32);
    const auto far = [gain](int a, int b) { return std::min(255, gain * std::abs(a - b)); };
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            result.setPixel(x, y,
                            qRgb(far(qRed(a), qRed(b)), far(qGreen(a), qGreen(b)),
                                 far(qBlue(a), qBlue(b))));
        }
    }
    return result;
}

} // namespace Tool
