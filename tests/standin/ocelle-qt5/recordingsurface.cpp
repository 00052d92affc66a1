// SPDX-License-Identifier: BSD-3-Clause
#include "recordingsurface.h"

#include <QThread>

using Lock = std::lock_guard<std::mutex>;

RecordingSurface::RecordingSurface(const Formats &supported)
    : formats(supported)
{
}

RecordingSurface::~RecordingSurface() = default;

QList<QVideoFrame::PixelFormat>
RecordingSurface::supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const
{
    record(nullptr);
    return type == QAbstractVideoBuffer::NoHandle ? formats : Formats();
}

bool RecordingSurface::isFormatSupported(const QVideoSurfaceFormat &format) const
{
    record(nullptr);
    return accepts ? accepts(format) : formats.contains(format.pixelFormat());
}

bool RecordingSurface::start(const QVideoSurfaceFormat &format)
{
    record("start");
    {
        Lock lock(m_mutex);
        m_started.push_back(format);
    }
    if (onStart)
        onStart();
    return startSucceeds && QAbstractVideoSurface::start(format);
}

void RecordingSurface::stop()
{
    record("stop");
    if (onStop)
        onStop();
    QAbstractVideoSurface::stop();
}

bool RecordingSurface::present(const QVideoFrame &frame)
{
    record("present");
    {
        Lock lock(m_mutex);
        m_startTimes.push_back(frame.startTime());
        if (keepFrames)
            m_frames.push_back(frame);
    }
    return onPresent ? onPresent(frame) : true;
}

int RecordingSurface::presented() const
{
    Lock lock(m_mutex);
    return int(m_startTimes.size());
}

QList<qint64> RecordingSurface::startTimes() const
{
    Lock lock(m_mutex);
    return { m_startTimes.begin(), m_startTimes.end() };
}

QList<QVideoFrame> RecordingSurface::frames() const
{
    Lock lock(m_mutex);
    return { m_frames.begin(), m_frames.end() };
}

QList<QVideoSurfaceFormat> RecordingSurface::started() const
{
    Lock lock(m_mutex);
    return { m_started.begin(), m_started.end() };
}

QStringList RecordingSurface::calls() const
{
    Lock lock(m_mutex);
    QStringList calls;
    for (const char *const call : m_calls)
        calls.append(QLatin1String(call));
    return calls;
}

std::vector<const QThread *> RecordingSurface::threads() const
{
    Lock lock(m_mutex);
    return m_threads;
}

void RecordingSurface::record(const char *call) const
{
    Lock lock(m_mutex);
    if (call)
        m_calls.push_back(call);
    m_threads.push_back(QThread::currentThread());
}
