// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QImage>
#include <QRect>
#include <QVideoFrame>

#include <cstdint>
#include <vector>

namespace Tool {

/*!
 * A copy of a picture as YUV 4:2:0, to be compared with others.
 *
 * Threads: a value.
 */
class YuvPicture
{
public:
    YuvPicture() = default;
    /*! What \a viewport tells of an NV12 or YUV420P frame; null for any other. */
    YuvPicture(const QVideoFrame &frame, const QRect &viewport);

    bool isNull() const { return m_size.isEmpty(); }
    QSize size() const { return m_size; }
    qint64 samples() const { return qint64(m_data.size()); }

    /*! The sum over all samples, for a picture of the same size. */
    std::uint64_t squaredErrorTo(const YuvPicture &other) const;
    QImage image() const;

private:
    int chromaWidth() const { return (m_size.width() + 1) / 2; }
    int chromaHeight() const { return (m_size.height() + 1) / 2; }
    std::size_t cbOffset() const
    {
        return std::size_t(m_size.width()) * std::size_t(m_size.height());
    }
    std::size_t crOffset() const
    {
        return cbOffset() + std::size_t(chromaWidth()) * std::size_t(chromaHeight());
    }

    QSize m_size;
    std::vector<std::uint8_t> m_data; // Y, Cb, Cr without padding
};

/*! Peak signal to noise ratio in dB, at most 99. */
double psnr(std::uint64_t squaredError, qint64 samples);

/*! How far two images of the same size are apart, each colour by itself and \a gain times as much. */
QImage difference(const QImage &one, const QImage &other, int gain);

} // namespace Tool
