// SPDX-License-Identifier: BSD-3-Clause
#include "patternfiles.h"

#include <QJsonDocument>
#include <QProcess>
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

bool lay(const QString &upright, int degrees, const QString &to)
{
    const QString lying = to + ".lying.mp4";
    const QStringList quiet { "-nostdin", "-loglevel", "error", "-y" };
    QStringList turns; // against the clock
    for (int turned = 0; turned < degrees; turned += 90)
        turns.append("transpose=cclock");
    return QProcess::execute("ffmpeg", quiet + QStringList { "-i", upright, "-vf", turns.join(','),
                                                             "-crf", "10", lying }) == 0 &&
           QProcess::execute("ffmpeg",
                             quiet + QStringList { "-i", lying, "-c", "copy", "-metadata:s:v:0",
                                                   "rotate=" + QString::number(360 - degrees),
                                                   to }) == 0;
}
