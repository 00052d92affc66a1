// SPDX-License-Identifier: BSD-3-Clause
#include "patternvideo.h"

#include "picturememory.h"
#include "testpattern.h"

#include <QDebug>
#include <QProcess>

using namespace Veltra::Ocelle;

namespace {

QByteArray rawPictures(const PatternVideo &video)
{
    const TestPattern pattern(video.width, video.height, PixelFormat::YU12);
    PictureMemory picture;
    picture.allocate(video.width, video.height, PixelFormat::YU12);
    TestPattern::Planes planes {};
    for (std::size_t i = 0; i < 3; ++i)
        planes[i] = { picture.writablePlanes()[i].data, picture.writablePlanes()[i].stride };
    pattern.paintBackground(planes);
    QByteArray raw;
    for (int number = 0; number < video.pictures; ++number) {
        pattern.update(planes, std::uint64_t(number), number * 1000000LL / video.rate);
        for (std::size_t i = 0; i < 3; ++i) {
            const int width = i == 0 ? video.width : (video.width + 1) / 2;
            for (int line = 0; line < picture.planes[i].lines; ++line)
                raw.append(reinterpret_cast<const char *>(picture.planes[i].data) +
                                   qptrdiff(line) * picture.planes[i].stride,
                           width);
        }
    }
    return raw;
}

} // namespace

bool PatternVideo::write(const QString &path) const
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QStringList arguments { "-nostdin", "-loglevel", "error",    "-y",
                            "-f",       "rawvideo",  "-pix_fmt", "yuv420p" };
    arguments << "-s" << QString("%1x%2").arg(width).arg(height) << "-r" << QString::number(rate)
              << "-i"
              << "-" << options << path;
    process.start("ffmpeg", arguments);
    process.write(rawPictures(*this));
    process.closeWriteChannel();
    if (process.waitForFinished(60000) && process.exitCode() == 0)
        return true;
    qWarning() << "ffmpeg did not make" << path << process.errorString();
    return false;
}
