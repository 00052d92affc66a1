// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "patternvideo.h"
#include "toolprocess.h"

#include <QJsonObject>
#include <QStringList>

/*! One row for each codec, "codec", with the name of a file that holds it, "file". */
void addCodecFiles();

/*! Of so many pictures, encoded with additional \a options of ffmpeg. */
PatternVideo patternVideo(int pictures, const QStringList &options = {});

/*! The pictures of \a upright in a file that has them lie, to be shown turned clockwise. */
bool lay(const QString &upright, int degrees, const QString &to);

/*! What "--json" printed. */
QJsonObject object(const ToolResult &result);
