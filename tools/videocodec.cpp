// SPDX-License-Identifier: BSD-3-Clause
#include "videocodec.h"

#include "cameralist.h"

namespace Tool {
namespace {

struct Names
{
    VideoCodec codec;
    const char *name;
    const char *mimeType;
};

constexpr Names Codecs[] = {
    { VideoCodec::H264, "h264", "video/h264" },
    { VideoCodec::H265, "h265", "video/h265" },
    { VideoCodec::VP8, "vp8", "video/vp8" },
    { VideoCodec::VP9, "vp9", "video/vp9" },
};

QList<VideoContainer> containers()
{
    using C = VideoCodec;
    return {
        { QStringLiteral("mkv"),
          QStringLiteral("Matroska"),
          "matroska",
          { C::H264, C::H265, C::VP8, C::VP9 } },
        { QStringLiteral("mp4"), QStringLiteral("MP4"), "mp4", { C::H264, C::H265, C::VP9 } },
        { QStringLiteral("webm"), QStringLiteral("WebM"), "webm", { C::VP8, C::VP9 } },
        { QStringLiteral("ivf"), QStringLiteral("IVF"), "ivf", { C::VP8, C::VP9 } },
    };
}

} // namespace

QStringList codecNames()
{
    QStringList names;
    for (const Names &one : Codecs)
        names.append(QLatin1String(one.name));
    return names;
}

std::optional<VideoCodec> codecNamed(const QString &name)
{
    for (const Names &one : Codecs) {
        if (name == QLatin1String(one.name))
            return one.codec;
    }
    return std::nullopt;
}

QString codecName(VideoCodec codec)
{
    return QLatin1String(Codecs[static_cast<int>(codec)].name);
}

QString mimeType(VideoCodec codec)
{
    return QLatin1String(Codecs[static_cast<int>(codec)].mimeType);
}

QString containerSuffixes()
{
    QStringList suffixes;
    for (const VideoContainer &container : containers())
        suffixes.append(QLatin1Char('.') + container.suffix);
    return joined(suffixes);
}

std::optional<VideoContainer> containerOf(const QString &fileName)
{
    for (const VideoContainer &container : containers()) {
        if (fileName.endsWith(QLatin1Char('.') + container.suffix, Qt::CaseInsensitive))
            return container;
    }
    return std::nullopt;
}

std::optional<VideoCodec> chooseCodec(const VideoContainer &container,
                                      std::optional<VideoCodec> wanted, QString *error)
{
    const VideoCodec codec = wanted.value_or(container.codecs.first());
    if (container.codecs.contains(codec))
        return codec;
    QStringList names;
    for (const VideoCodec held : container.codecs)
        names.append(codecName(held));
    *error = QStringLiteral("%1 files cannot hold %2, only %3")
                     .arg(container.name, codecName(codec), joined(names));
    return std::nullopt;
}

} // namespace Tool
