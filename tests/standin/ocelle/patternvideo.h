// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>
#include <QStringList>

/*! A video file of the numbered test picture, made by the ffmpeg command. */
struct PatternVideo
{
    int width = 320;
    int height = 240;
    int rate = 30;     // pictures per second
    int pictures = 12; // numbered from 0
    // Everything between input and output.
    QStringList options = QStringList { "-c:v", "libx264", "-preset", "ultrafast", "-crf", "20" };

    /*! Writes it to \a path; the end of its name tells the container. False with a warning. */
    bool write(const QString &path) const;
};
