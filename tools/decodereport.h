// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "decoding.h"

#include <QJsonObject>
#include <QString>

namespace Tool {

class FilePlayer;

/*! What decoding a file came to. */
struct DecodeReport
{
    QString file;
    VideoCodec codec = VideoCodec::H264;
    QSize size;          // of the last picture, as it is to be seen
    qint64 pictures = 0; // that were handed over
    Decoding::Counts counts;
    double seconds = 0; // from the first compressed picture to the last one on the surface
    double rate = 0;    // pictures per second
    qint64 dropped = 0; // pictures for which the surface's queue had no room
    qint64 lost = 0;    // pictures that were handed over and never came out

    /*! What \a player has counted for \a file, with \a surface the one it decoded to. */
    static DecodeReport of(const FilePlayer &player, const QString &file,
                           const QAbstractVideoSurface *surface);
};

QString toText(const DecodeReport &report);
QJsonObject toJson(const DecodeReport &report);

} // namespace Tool
