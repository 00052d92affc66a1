// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace Tool {

/*! The kinds of video that can be recorded. */
enum class VideoCodec { H264, H265, VP8, VP9 };

QStringList codecNames(); // as they are written on the command line
std::optional<VideoCodec> codecNamed(const QString &name);
QString codecName(VideoCodec codec);
QString mimeType(VideoCodec codec);

/*! What a file's name says of its container. */
struct VideoContainer
{
    QString suffix; // of the file's name
    QString name;   // for people
    const char *muxer;
    QList<VideoCodec> codecs; // that it can hold, the usual one first
};

/*! ".mkv, .mp4, .webm and .ivf" */
QString containerSuffixes();
/*! By the end of the file's name; nothing for any other. */
std::optional<VideoContainer> containerOf(const QString &fileName);

/*!
 * The codec that is asked for, or else the usual one of the file's container.
 *
 * Errors: nothing, and \a error says what the container can hold.
 */
std::optional<VideoCodec> chooseCodec(const VideoContainer &container,
                                      std::optional<VideoCodec> wanted, QString *error);

} // namespace Tool
