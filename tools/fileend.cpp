// SPDX-License-Identifier: BSD-3-Clause
#include "fileend.h"

namespace Tool {

qint64 toldDuration(const AVFormatContext &container, int stream)
{
    const AVStream &video = *container.streams[stream];
    if (container.duration_estimation_method == AVFMT_DURATION_FROM_BITRATE)
        return 0; // a guess
    if (video.duration > 0)
        return av_rescale_q(video.duration, video.time_base, Microseconds);
    return container.nb_streams == 1 ? qMax<qint64>(0, container.duration) : 0;
}

void FileEnd::set(qint64 duration, double rate)
{
    m_duration = duration;
    m_period = 1e6 / rate;
}

void FileEnd::add(const AVPacket &packet, qint64 time, AVRational timeBase)
{
    const qint64 told = packet.duration > 0 ? av_rescale_q(packet.duration, timeBase, Microseconds)
                                            : 0; // a picture may be shown for long
    m_end = qMax(m_end, time + qMax(told, qint64(m_period)));
}

void FileEnd::addCut()
{
    m_isCut = true;
}

QString FileEnd::missing(const QString &path) const
{
    const double tolerance = qMax(2 * m_period, 5e5);
    if (m_duration > 0 && double(m_end) + tolerance < double(m_duration))
        return QStringLiteral("%1: is cut off after %2 s of %3 s")
                .arg(path, QString::number(double(m_end) / 1e6, 'f', 2),
                     QString::number(double(m_duration) / 1e6, 'f', 2));
    return m_isCut ? QStringLiteral("%1: is cut off within a picture").arg(path) : QString();
}

} // namespace Tool
