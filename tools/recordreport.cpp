// SPDX-License-Identifier: BSD-3-Clause
#include "recordreport.h"

namespace Tool {

QSize RecordReport::size() const
{
    return settings.rotation % 180 == 0 ? settings.size : settings.size.transposed();
}

QString RecordReport::file() const
{
    return isComplete ? settings.file : settings.file + VideoFileWriter::partSuffix();
}

/*! The last picture is there for one period, too. */
double RecordReport::seconds() const
{
    return written.units > 0 ? double(written.duration) / 1e6 + 1 / settings.rate : 0;
}

double RecordReport::bitRate() const
{
    return written.units > 0 ? 8 * double(written.bytes) / seconds() : 0;
}

QString toText(const RecordReport &report)
{
    QString text = QStringLiteral("%1: %2 %3x%4 from %5: %6 pictures, %7 s, %8 kbit/s, %9 dropped")
                           .arg(report.file(), codecName(report.settings.codec),
                                QString::number(report.size().width()),
                                QString::number(report.size().height()), report.source,
                                QString::number(report.written.units),
                                QString::number(report.seconds(), 'f', 2),
                                QString::number(report.bitRate() / 1000, 'f', 0),
                                QString::number(report.dropped));
    if (report.missing)
        text += QStringLiteral(", %1 missing").arg(*report.missing);
    if (report.speed)
        text += QStringLiteral("; %1 pictures/s").arg(*report.speed, 0, 'f', 1);
    return text;
}

QJsonObject toJson(const RecordReport &report)
{
    QJsonObject json {
        { QStringLiteral("source"), report.source },
        { QStringLiteral("file"), report.file() },
        { QStringLiteral("complete"), report.isComplete },
        { QStringLiteral("codec"), codecName(report.settings.codec) },
        { QStringLiteral("width"), report.size().width() },
        { QStringLiteral("height"), report.size().height() },
        { QStringLiteral("fps"), report.settings.rate },
        { QStringLiteral("pictures"), report.written.units },
        { QStringLiteral("key_frames"), report.written.keyFrames },
        { QStringLiteral("seconds"), report.seconds() },
        { QStringLiteral("bytes"), report.written.bytes },
        { QStringLiteral("bitrate"), qRound64(report.bitRate()) },
        { QStringLiteral("dropped"), report.dropped },
    };
    if (report.missing)
        json.insert(QStringLiteral("missing"), *report.missing);
    if (report.speed)
        json.insert(QStringLiteral("pictures_per_second"), *report.speed);
    return json;
}

QString progressText(double seconds, qint64 pictures, double bitRate, qint64 dropped)
{
    return QStringLiteral("%1 s: %2 pictures, %3 kbit/s, %4 dropped")
            .arg(seconds, 0, 'f', 0)
            .arg(pictures)
            .arg(bitRate / 1000, 0, 'f', 0)
            .arg(dropped);
}

} // namespace Tool
