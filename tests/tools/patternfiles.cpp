// SPDX-License-Identifier: BSD-3-Clause
#include "patternfiles.h"

#include <QJsonDocument>
#include <QtTest>

void addCodecFiles()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QString>("file");
    QTest::newRow("h264") << "h264"
                          << "v.mp4";
    QTest::newRow("h265") << "h265"
                          << "v.mkv";
    QTest::newRow("vp8") << "vp8"
                         << "v.ivf";
    QTest::newRow("vp9") << "vp9"
                         << "v.webm";
}

QJsonObject object(const ToolResult &result)
{
    return QJsonDocument::fromJson(result.output).object();
}

PatternVideo patternVideo(int pictures, const QStringList &options)
{
    PatternVideo video;
    video.pictures = pictures;
    video.options += options;
    return video;
}
