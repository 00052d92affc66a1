// SPDX-License-Identifier: BSD-3-Clause
#include "filesink.h"

#include <QMutexLocker>

#include <palaver/qpvencodedvideoframe.h>

namespace Tool {

FileSink::FileSink(VideoFileWriter *writer)
    : m_writer(writer)
{
}

FileSink::Written FileSink::written() const
{
    QMutexLocker locker(&m_mutex);
    return m_written;
}

bool FileSink::isFormatSupported(const QVideoEncoderSettings &)
{
    return true; // the container was chosen for the codec
}

bool FileSink::start(const QVideoEncoderSettings &)
{
    return true;
}

void FileSink::present(const QPVEncodedVideoFrame &frame)
{
    {
        QMutexLocker locker(&m_mutex);
        if (m_hasFailed)
            return;
    }
    const QByteArray data = frame.data();
    const auto time = static_cast<qint64>(frame.meta().timestamp);
    const bool isKey = frame.meta().frameType == QPVEncodedVideoFrame::KeyFrame;
    QString error;
    const bool isWritten = m_writer->write(data, time, isKey, &error);
    {
        QMutexLocker locker(&m_mutex);
        m_hasFailed = !isWritten;
        if (isWritten) {
            if (m_written.units == 0)
                m_firstTime = time;
            ++m_written.units;
            m_written.bytes += data.size();
            m_written.keyFrames += isKey ? 1 : 0;
            m_written.duration = time - m_firstTime;
        }
    }
    if (isWritten)
        emit unitWritten();
    else
        emit failed(error);
}

} // namespace Tool
