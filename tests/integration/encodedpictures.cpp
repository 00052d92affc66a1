// SPDX-License-Identifier: BSD-3-Clause
#include "encodedpictures.h"

#include "unitdecoder.h"

#include <patternreader.h>

#include <algorithm>
#include <utility>

QVideoFrame videoFrame(const RawPicture &picture, qint64 time)
{
    const int luma = int(picture.y.size());
    const int chroma = int(picture.cb.size());
    QVideoFrame frame(luma + 2 * chroma, QSize(picture.width, picture.height), picture.width,
                      QVideoFrame::Format_YUV420P);
    frame.map(QAbstractVideoBuffer::WriteOnly);
    std::copy(picture.y.begin(), picture.y.end(), frame.bits());
    std::copy(picture.cb.begin(), picture.cb.end(), frame.bits() + luma);
    std::copy(picture.cr.begin(), picture.cr.end(), frame.bits() + luma + chroma);
    frame.unmap();
    frame.setStartTime(time);
    return frame;
}

QVideoFrame nv12Frame(const RawPicture &picture, qint64 time)
{
    const int luma = int(picture.y.size());
    const int chroma = int(picture.cb.size());
    QVideoFrame frame(luma + 2 * chroma, QSize(picture.width, picture.height), picture.width,
                      QVideoFrame::Format_NV12);
    frame.map(QAbstractVideoBuffer::WriteOnly);
    std::copy(picture.y.begin(), picture.y.end(), frame.bits());
    for (int i = 0; i < chroma; ++i) {
        frame.bits()[luma + 2 * i] = picture.cb[std::size_t(i)];
        frame.bits()[luma + 2 * i + 1] = picture.cr[std::size_t(i)];
    }
    frame.unmap();
    frame.setStartTime(time);
    return frame;
}

QVideoFrame rgbVideoFrame(const RawPicture &picture, qint64 time)
{
    const auto rgb = rgbFrame(picture, time);
    QVideoFrame frame(rgb->stride * picture.height, QSize(picture.width, picture.height),
                      rgb->stride, QVideoFrame::Format_RGB32);
    frame.map(QAbstractVideoBuffer::WriteOnly);
    std::copy(rgb->data, rgb->data + rgb->stride * picture.height, frame.bits());
    frame.unmap();
    frame.setStartTime(time);
    return frame;
}

QVideoFrame patternFrame(int width, int height, int number)
{
    return videoFrame(RawPicture::pattern(width, height, std::uint32_t(number)),
                      qint64(number) * FramePeriod);
}

namespace {

/*! libavcodec's decoder for a MIME type. */
std::string decoderName(const QString &codec)
{
    return codec == QLatin1String("video/h265") ? "hevc" : codec.mid(6).toStdString();
}

} // namespace

Reading readingOf(const RawPicture &picture)
{
    Reading result;
    result.size = QSize(picture.width, picture.height);
    const auto found = Veltra::Ocelle::readPattern(picture.y.data(), picture.width, picture.width,
                                                   picture.height);
    if (found) {
        result.number = int(found->sequence);
        result.rotation = found->rotation;
        result.mirrored = found->mirrored;
    }
    return result;
}

std::vector<RawPicture> decoded(const QString &codec, const QList<QPVEncodedVideoFrame> &units)
{
    UnitDecoder decoder(decoderName(codec));
    std::vector<RawPicture> pictures;
    const auto take = [&pictures](std::vector<RawPicture> more) {
        for (RawPicture &picture : more)
            pictures.push_back(std::move(picture));
    };
    for (const QPVEncodedVideoFrame &unit : units) {
        const QByteArray data = unit.data();
        take(decoder.decode({ data.begin(), data.end() }));
    }
    take(decoder.finish());
    return pictures;
}
