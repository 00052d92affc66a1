// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "rawpicture.h"

#include <QList>
#include <QSize>
#include <QString>

#include <vector>

/*! What libav finds in a video file. */
struct RecordedVideo
{
    /*! Reads all of it; a file that cannot be read has no pictures. */
    static RecordedVideo read(const QString &path);

    QString codec;         // libav's name
    QSize size;            // as the container has it
    double rate = 0;       // pictures per second, as the container has it
    double duration = 0;   // seconds
    int packets = 0;       // compressed pictures
    QList<bool> keyFrames; // of each packet
    QList<qint64> times;   // microseconds, of each packet
    QList<int> numbers;    // in the test picture; -1 where none can be read
    QList<int> rotations;  // degrees clockwise, of the test picture
    QList<bool> mirrored;  // left to right before it was turned
    std::vector<RawPicture> pictures;
};
