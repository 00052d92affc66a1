// SPDX-License-Identifier: BSD-3-Clause
#include "seenpicture.h"

#include "testpictures.h"

#include <QtGlobal>

#include <cstddef>
#include <cstdlib>

namespace Compliance {
namespace {

using namespace Veltra::Ocelle;

// Others may understand RGB as BT.709 or with all of the range; none of that is as far off.
constexpr int Tolerance = 40; // steps of luma or chroma

QRect visiblePart(const QSize &size, const QRect &viewport)
{
    const QRect whole(QPoint(), size);
    const QRect part = viewport & whole;
    return part.isEmpty() ? whole : part;
}

// The mean of a few samples in the middle of each bar. A sample is asked for within the size.
template <class Sample>
std::array<Colour, SeenPicture::Bars> barsOf(const QSize &size, const Sample &sample)
{
    constexpr double middle = 2.0 / 15; // of the height: the bars end at twice that
    constexpr int side = 4;             // samples
    constexpr int distance = 2;         // pixels
    std::array<Colour, SeenPicture::Bars> bars {};
    for (int bar = 0; bar < SeenPicture::Bars; ++bar) {
        const int left = (2 * bar + 1) * size.width() / (2 * SeenPicture::Bars) - side;
        const int top = int(size.height() * middle) - side;
        Colour sum;
        for (int i = 0; i < side * side; ++i) {
            const Colour colour = sample(qBound(0, left + i % side * distance, size.width() - 1),
                                         qBound(0, top + i / side * distance, size.height() - 1));
            sum.y += colour.y;
            sum.cb += colour.cb;
            sum.cr += colour.cr;
        }
        constexpr int count = side * side;
        bars[std::size_t(bar)] = { sum.y / count, sum.cb / count, sum.cr / count };
    }
    return bars;
}

bool isNear(const Colour &one, const Colour &other)
{
    return std::abs(one.y - other.y) <= Tolerance && std::abs(one.cb - other.cb) <= Tolerance &&
           std::abs(one.cr - other.cr) <= Tolerance;
}

QString text(const Colour &colour)
{
    return QStringLiteral("%1/%2/%3").arg(colour.y).arg(colour.cb).arg(colour.cr);
}

} // namespace

SeenPicture lookAt(const YCbCrFrame &frame, const QRect &viewport)
{
    const QSize size(frame.width, frame.height);
    Planes planes { frame.y, frame.cb, frame.cr, frame.yStride, frame.cStride, frame.chromaStep };
    if (frame.yStride < frame.width)
        planes.y = nullptr;
    if (frame.cStride < (frame.width + 1) / 2 * frame.chromaStep)
        planes.cb = nullptr;
    SeenPicture picture = lookAt(planes, size, viewport);
    picture.timestamp = frame.timestamp;
    return picture;
}

SeenPicture lookAt(const Planes &planes, const QSize &size, const QRect &viewport)
{
    const QRect part = visiblePart(size, viewport);
    SeenPicture picture { part.size(), 0, std::nullopt, {} };
    if (!planes.y || part.isEmpty())
        return picture;
    const std::uint8_t *const luma = planes.y + qint64(part.top()) * planes.yStride + part.left();
    picture.reading = readPattern(luma, planes.yStride, part.width(), part.height());
    if (!planes.cb || !planes.cr)
        return picture;
    picture.bars = barsOf(part.size(), [&](int x, int y) {
        const qint64 chroma = qint64((part.top() + y) / 2) * planes.cStride +
                              (part.left() + x) / 2 * planes.chromaStep;
        return Colour { luma[qint64(y) * planes.yStride + x], planes.cb[chroma],
                        planes.cr[chroma] };
    });
    return picture;
}

SeenPicture lookAtRgb32(const std::uint8_t *pixels, int stride, const QSize &size,
                        const QRect &viewport)
{
    const QRect part = visiblePart(size, viewport);
    SeenPicture picture { part.size(), 0, std::nullopt, {} };
    if (!pixels || part.isEmpty())
        return picture;
    const std::uint8_t *const first = pixels + qint64(part.top()) * stride + part.left() * 4;
    picture.reading = readPatternRgb32(first, stride, part.width(), part.height());
    picture.bars = barsOf(part.size(), [&](int x, int y) {
        const std::uint8_t *const pixel = first + qint64(y) * stride + x * 4;
        const int blue = pixel[0];
        const int green = pixel[1];
        const int red = pixel[2];
        return Colour { 16 + (66 * red + 129 * green + 25 * blue) / 256,
                        128 + (112 * blue - 38 * red - 74 * green) / 256,
                        128 + (112 * red - 94 * green - 18 * blue) / 256 };
    });
    return picture;
}

QString numberProblem(const std::vector<SeenPicture> &seen)
{
    const QSize size(PictureWidth, PictureHeight);
    for (std::size_t i = 0; i < seen.size(); ++i) {
        if (seen[i].size != size)
            return QStringLiteral("a decoded picture is %1x%2")
                    .arg(seen[i].size.width())
                    .arg(seen[i].size.height());
        if (!seen[i].reading)
            return QStringLiteral("decoded picture %1 cannot be recognised").arg(i);
        if (seen[i].reading->sequence != i)
            return QStringLiteral("picture %1 comes where %2 is due")
                    .arg(seen[i].reading->sequence)
                    .arg(i);
    }
    return {};
}

QString colourProblem(const std::vector<SeenPicture> &seen)
{
    constexpr std::array<const char *, SeenPicture::Bars> names { "grey",  "yellow",  "cyan",
                                                                  "green", "magenta", "red",
                                                                  "blue",  "black" };
    const auto painted = makePicture(0, 0, std::make_shared<PictureCount>());
    const auto due = lookAt(*painted, QRect()).bars;
    for (const SeenPicture &picture : seen) {
        for (std::size_t bar = 0; bar < due.size(); ++bar) {
            if (!isNear(picture.bars[bar], due[bar]))
                return QStringLiteral("what is %1 comes out as Y/Cb/Cr %2 where about %3 is due")
                        .arg(QLatin1String(names[bar]), text(picture.bars[bar]), text(due[bar]));
        }
    }
    return {};
}

} // namespace Compliance
