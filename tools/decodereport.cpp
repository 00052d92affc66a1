// SPDX-License-Identifier: BSD-3-Clause
#include "decodereport.h"

#include "fileplayer.h"
#include "standinfunctions.h"

namespace Tool {
namespace {

QString milliseconds(double microseconds)
{
    return QString::number(microseconds / 1000, 'f', 2);
}

double rounded(double microseconds)
{
    return qRound64(microseconds) / 1000.0;
}

} // namespace

DecodeReport DecodeReport::of(const FilePlayer &player, const QString &file,
                              const QAbstractVideoSurface *surface)
{
    DecodeReport report;
    report.file = file;
    report.codec = player.stream().properties().codec;
    report.size = player.stream().properties().size;
    report.counts = player.counts();
    report.pictures = report.counts.expected();
    // What is still inside of one that was ended early is not lost.
    report.lost = player.isComplete() ? report.counts.lost()
                                      : qMax<qint64>(0, report.counts.lost() - player.inside());
    report.seconds = player.seconds();
    report.rate = player.rate();
    const auto counted = statisticsOf(surface);
    if (counted && player.isComplete())
        report.dropped = qint64(counted->dropped);
    return report;
}

QString toText(const DecodeReport &report)
{
    QString text =
            QStringLiteral("%1: %2 %3x%4: %5 pictures in, %6 out, %7 lost; %8 pictures/s")
                    .arg(report.file, codecName(report.codec), QString::number(report.size.width()),
                         QString::number(report.size.height()), QString::number(report.pictures),
                         QString::number(report.counts.pictures), QString::number(report.lost),
                         QString::number(report.rate, 'f', 1));
    const LatencyHistogram &times = report.counts.times;
    if (times.count() > 0) {
        text += QStringLiteral("; to the surface in mean %1 ms, median %2 ms, max %3 ms")
                        .arg(milliseconds(times.mean()), milliseconds(times.quantile(0.5)),
                             milliseconds(double(times.maximum())));
    }
    if (report.counts.damages > 0)
        text += QStringLiteral("; damaged in %1 places").arg(report.counts.damages);
    return text;
}

QJsonObject toJson(const DecodeReport &report)
{
    const LatencyHistogram &times = report.counts.times;
    return QJsonObject {
        { QStringLiteral("file"), report.file },
        { QStringLiteral("codec"), codecName(report.codec) },
        { QStringLiteral("width"), report.size.width() },
        { QStringLiteral("height"), report.size.height() },
        { QStringLiteral("in"), report.pictures },
        { QStringLiteral("out"), report.counts.pictures },
        { QStringLiteral("lost"), report.lost },
        { QStringLiteral("dropped"), report.dropped },
        { QStringLiteral("damaged"), report.counts.damages },
        { QStringLiteral("seconds"), report.seconds },
        { QStringLiteral("pictures_per_second"), report.rate },
        { QStringLiteral("decode_ms"),
          QJsonObject {
                  { QStringLiteral("mean"), rounded(times.mean()) },
                  { QStringLiteral("median"), rounded(times.quantile(0.5)) },
                  { QStringLiteral("max"), rounded(double(times.maximum())) },
          } },
    };
}

} // namespace Tool
