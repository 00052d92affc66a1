// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleencodedvideooutput.h"

#include <QMutexLocker>

#include <palaver/qpvencodecontrol.h>
#include <palaver/qpvencodedvideoframe.h>
#include <palaver/qpvencodedvideosink.h>

bool OcelleEncodedVideoOutput::attach(QPVSink *sink)
{
    QMutexLocker locker(&m_mutex);
    QPVEncodedVideoSink *const replaced = m_sink;
    if (replaced && replaced != sink) {
        m_sink = nullptr;
        replaced->stop();
        replaced->release();
    }
    const auto encodedVideoSink = dynamic_cast<QPVEncodedVideoSink *>(sink);
    if (m_sink != encodedVideoSink)
        m_isStarted = false;
    m_sink = encodedVideoSink;
    return m_sink;
}

bool OcelleEncodedVideoOutput::detach(QPVSink *sink)
{
    QMutexLocker locker(&m_mutex);
    if (!m_sink || m_sink != sink)
        return false;
    m_sink = nullptr;
    return true;
}

bool OcelleEncodedVideoOutput::accepts(const QVideoEncoderSettings &settings)
{
    QMutexLocker locker(&m_mutex);
    return !m_sink || m_sink->isFormatSupported(settings);
}

bool OcelleEncodedVideoOutput::start(const QVideoEncoderSettings &settings)
{
    QMutexLocker locker(&m_mutex);
    QPVEncodedVideoSink *const sink = m_sink;
    if (!sink)
        return true;
    m_isStarted = true;
    if (!sink->isFormatSupported(settings))
        return false;
    return m_sink != sink || sink->start(settings); // it may have gone meanwhile
}

bool OcelleEncodedVideoOutput::startIfNew(const QVideoEncoderSettings &settings)
{
    QMutexLocker locker(&m_mutex);
    return m_isStarted || start(settings);
}

void OcelleEncodedVideoOutput::finish()
{
    QMutexLocker locker(&m_mutex);
    m_isStarted = false;
    QPVEncodedVideoSink *const sink = m_sink;
    if (sink)
        sink->finish();
    if (sink && m_sink == sink)
        sink->stop();
}

void OcelleEncodedVideoOutput::finishIfStarted()
{
    QMutexLocker locker(&m_mutex);
    if (m_isStarted)
        finish();
}

void OcelleEncodedVideoOutput::deliver(const QPVEncodedVideoFrame &frame, QPVEncodeControl *control)
{
    QMutexLocker locker(&m_mutex);
    if (m_sink)
        m_sink->present(frame);
    emit control->encodedVideoFrame(frame);
}
