// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>

/*! Makes a video of that many seconds at \a path, H.264, 320x240, 30 pictures a second. */
bool makeVideo(const QString &path, int seconds);

/*! The pictures that libav decodes from the file; -1 where it cannot be read or is damaged. */
int decodedPictures(const QString &path);
