// SPDX-License-Identifier: BSD-3-Clause
#include "videofiles.h"

#include <QProcess>
#include <QStringList>

namespace {

constexpr int Patience = 60000; // ms

bool run(const QStringList &command, QByteArray *output)
{
    QProcess process;
    process.start(command.first(), command.mid(1));
    if (!process.waitForFinished(Patience) || process.exitCode() != 0)
        return false;
    *output = process.readAllStandardOutput();
    return process.readAllStandardError().isEmpty();
}

} // namespace

bool makeVideo(const QString &path, int seconds)
{
    QByteArray ignored;
    const QString source = QStringLiteral("testsrc2=size=320x240:rate=30:duration=%1").arg(seconds);
    return run(QStringLiteral("ffmpeg -v error -f lavfi -i %1 -c:v libx264 -pix_fmt yuv420p")
                               .arg(source)
                               .split(QLatin1Char(' '))
                       << path,
               &ignored);
}

int decodedPictures(const QString &path)
{
    QByteArray output;
    if (!run(QStringLiteral("ffprobe -v error -count_frames -select_streams v:0 -show_entries "
                            "stream=nb_read_frames -of csv=p=0")
                             .split(QLatin1Char(' '))
                     << path,
             &output))
        return -1;
    bool isNumber = false;
    const int pictures = output.trimmed().toInt(&isNumber);
    return isNumber ? pictures : -1;
}
