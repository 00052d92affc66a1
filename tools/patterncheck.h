// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QJsonObject>
#include <QString>

#include <map>
#include <optional>

class QRect;
class QVideoFrame;

namespace Tool {

/*! The number in a picture of the test pattern, of which \a viewport is to be seen. */
std::optional<quint32> patternNumber(const QVideoFrame &frame, const QRect &viewport);

/*!
 * Judges the numbers of test pictures: each one that follows on the last is as it should be.
 *
 * Threads: one at a time.
 */
class PatternCheck
{
public:
    void add(std::optional<quint32> number); // nothing where it cannot be read

    qint64 pictures() const { return m_read + m_unreadable; }
    qint64 read() const { return m_read; }
    qint64 unreadable() const { return m_unreadable; }
    qint64 lost() const; // numbers that were skipped and never came
    qint64 repeated() const { return m_repeated; }
    qint64 reordered() const { return m_reordered; } // that came after a higher one
    std::optional<quint32> first() const { return m_first; }
    quint32 highest() const { return m_highest; }
    /*! The numbers that are missing, the first few of them: "7, 12 to 15 and more". */
    QString lostNumbers() const;

    bool isFlawless() const
    {
        return m_read > 0 && m_unreadable == 0 && m_repeated == 0 && m_reordered == 0 &&
               lost() == 0;
    }

private:
    bool fillGap(quint32 number);

    std::map<quint32, quint32> m_gaps; // first number that is missing, last one
    std::optional<quint32> m_first;
    quint32 m_highest = 0;
    qint64 m_read = 0;
    qint64 m_unreadable = 0;
    qint64 m_repeated = 0;
    qint64 m_reordered = 0;
};

QString toText(const PatternCheck &check);
void addTo(QJsonObject *json, const PatternCheck &check);

} // namespace Tool
