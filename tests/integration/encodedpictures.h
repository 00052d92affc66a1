// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "rawpicture.h"

#include <QList>
#include <QSize>
#include <QString>
#include <QVideoFrame>

#include <palaver/qpvencodedvideoframe.h>

#include <vector>

constexpr qint64 FramePeriod = 33333; // microseconds

// What an application hands to an encoder, in memory of its own.
QVideoFrame videoFrame(const RawPicture &picture, qint64 time);
QVideoFrame nv12Frame(const RawPicture &picture, qint64 time);
QVideoFrame rgbVideoFrame(const RawPicture &picture, qint64 time);
/*! The test pattern of that \a number, at its time. */
QVideoFrame patternFrame(int width, int height, int number);

/*! What the test pattern tells. */
struct Reading
{
    int number = -1; // where none can be read
    int rotation = 0;
    bool mirrored = false;
    QSize size;
};

Reading readingOf(const RawPicture &picture);

/*! The pictures of all \a units of a codec (MIME type), by libavcodec. */
std::vector<RawPicture> decoded(const QString &codec, const QList<QPVEncodedVideoFrame> &units);
