// SPDX-License-Identifier: BSD-3-Clause
#include "unitsink.h"

#include <QMutexLocker>

bool UnitSink::start(const QVideoEncoderSettings &)
{
    QMutexLocker locker(&m_mutex);
    ++m_calls.starts;
    m_isStarted = true;
    return true;
}

void UnitSink::present(const QPVEncodedVideoFrame &frame)
{
    QMutexLocker locker(&m_mutex);
    ++m_count;
    m_bytes += frame.data().size();
    if (!m_isStarted)
        ++m_calls.lateUnits;
    if (m_keeps)
        m_units.append(frame);
}

void UnitSink::finish()
{
    QMutexLocker locker(&m_mutex);
    ++m_calls.finishes;
}

void UnitSink::stop()
{
    QMutexLocker locker(&m_mutex);
    ++m_calls.stops;
    m_isStarted = false;
}

void UnitSink::countOnly()
{
    QMutexLocker locker(&m_mutex);
    m_keeps = false;
    m_units.clear();
}

UnitSink::Calls UnitSink::calls() const
{
    QMutexLocker locker(&m_mutex);
    return m_calls;
}

int UnitSink::count() const
{
    QMutexLocker locker(&m_mutex);
    return m_count;
}

qint64 UnitSink::bytes() const
{
    QMutexLocker locker(&m_mutex);
    return m_bytes;
}

QList<QPVEncodedVideoFrame> UnitSink::units() const
{
    QMutexLocker locker(&m_mutex);
    return m_units;
}
