// SPDX-License-Identifier: BSD-3-Clause
#include "patterncheck.h"

#include <QRect>
#include <QVideoFrame>

#include <patternreader.h>

namespace Tool {
namespace {

constexpr int MostRanges = 5; // that are told one by one

} // namespace

std::optional<quint32> patternNumber(const QVideoFrame &frame, const QRect &viewport)
{
    QVideoFrame mapped(frame);
    if (!mapped.map(QAbstractVideoBuffer::ReadOnly))
        return std::nullopt;
    QRect part = viewport & QRect(QPoint(), frame.size());
    if (part.isEmpty())
        part = QRect(QPoint(), frame.size());
    const bool isRgb = frame.pixelFormat() == QVideoFrame::Format_RGB32;
    const int stride = mapped.bytesPerLine(0);
    const uchar *const from =
            mapped.bits(0) + qint64(part.top()) * stride + part.left() * (isRgb ? 4 : 1);
    const auto read = isRgb ? Veltra::Ocelle::readPatternRgb32 : Veltra::Ocelle::readPattern;
    const auto reading = read(from, stride, part.width(), part.height());
    mapped.unmap();
    return reading ? std::optional<quint32>(reading->sequence) : std::nullopt;
}

void PatternCheck::add(std::optional<quint32> number)
{
    if (!number) {
        ++m_unreadable;
        return;
    }
    ++m_read;
    if (!m_first) {
        m_first = m_highest = *number;
        return;
    }
    if (*number > m_highest) {
        if (*number > m_highest + 1)
            m_gaps[m_highest + 1] = *number - 1;
        m_highest = *number;
        return;
    }
    if (*number < *m_first || fillGap(*number))
        ++m_reordered;
    else
        ++m_repeated;
}

/*! Whether it was missing so far; then it no longer is. */
bool PatternCheck::fillGap(quint32 number)
{
    auto gap = m_gaps.upper_bound(number);
    if (gap == m_gaps.begin())
        return false;
    --gap;
    const quint32 first = gap->first;
    const quint32 last = gap->second;
    if (number > last)
        return false;
    m_gaps.erase(gap);
    if (first < number)
        m_gaps[first] = number - 1;
    if (number < last)
        m_gaps[number + 1] = last;
    return true;
}

qint64 PatternCheck::lost() const
{
    qint64 count = 0;
    for (const auto &gap : m_gaps)
        count += qint64(gap.second) - gap.first + 1;
    return count;
}

QString PatternCheck::lostNumbers() const
{
    QStringList ranges;
    for (const auto &gap : m_gaps) {
        if (ranges.size() == MostRanges)
            return ranges.join(QStringLiteral(", ")) + QStringLiteral(" and more");
        ranges.append(gap.first == gap.second
                              ? QString::number(gap.first)
                              : QStringLiteral("%1 to %2").arg(gap.first).arg(gap.second));
    }
    return ranges.join(QStringLiteral(", "));
}

QString toText(const PatternCheck &check)
{
    QString text = QStringLiteral("numbers %1 to %2: %3 read, %4 lost, %5 repeated, %6 reordered, "
                                  "%7 unreadable")
                           .arg(check.first().value_or(0))
                           .arg(check.highest())
                           .arg(check.read())
                           .arg(check.lost())
                           .arg(check.repeated())
                           .arg(check.reordered())
                           .arg(check.unreadable());
    if (check.lost() > 0)
        text += QStringLiteral("; missing are %1").arg(check.lostNumbers());
    return text;
}

void addTo(QJsonObject *json, const PatternCheck &check)
{
    json->insert(QStringLiteral("pattern"),
                 QJsonObject {
                         { QStringLiteral("first"), qint64(check.first().value_or(0)) },
                         { QStringLiteral("last"), qint64(check.highest()) },
                         { QStringLiteral("read"), check.read() },
                         { QStringLiteral("lost"), check.lost() },
                         { QStringLiteral("repeated"), check.repeated() },
                         { QStringLiteral("reordered"), check.reordered() },
                         { QStringLiteral("unreadable"), check.unreadable() },
                 });
}

} // namespace Tool
