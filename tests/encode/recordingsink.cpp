// SPDX-License-Identifier: BSD-3-Clause
#include "recordingsink.h"

#include "calllog.h"

#include <QVideoEncoderSettings>

#include <palaver/qpvencodedvideoframe.h>

namespace {

QString text(const QVideoEncoderSettings &settings)
{
    return QStringLiteral("%1 %2x%3@%4")
            .arg(settings.codec())
            .arg(settings.resolution().width())
            .arg(settings.resolution().height())
            .arg(settings.frameRate());
}

thread_local int callsOfThisThread = 0;

} // namespace

/*! Counts the threads within a call; a sink that calls itself counts once. */
class RecordingSink::Guard
{
public:
    explicit Guard(RecordingSink *sink)
        : m_sink(sink)
    {
        if (callsOfThisThread++ > 0)
            return;
        const int calls = ++m_sink->m_calls;
        if (calls > m_sink->callsAtOnce)
            m_sink->callsAtOnce = calls;
    }
    ~Guard()
    {
        if (--callsOfThisThread == 0)
            --m_sink->m_calls;
    }

private:
    Q_DISABLE_COPY(Guard)
    RecordingSink *const m_sink;
};

RecordingSink::RecordingSink(const QString &name)
    : m_name(name)
{
}

void RecordingSink::release()
{
    const Guard guard(this);
    log(QStringLiteral("release()"));
}

bool RecordingSink::isFormatSupported(const QVideoEncoderSettings &settings)
{
    const Guard guard(this);
    log(QStringLiteral("isFormatSupported(%1)").arg(text(settings)));
    if (onFormat)
        onFormat();
    return supportsFormat;
}

bool RecordingSink::start(const QVideoEncoderSettings &settings)
{
    const Guard guard(this);
    log(QStringLiteral("start(%1)").arg(text(settings)));
    if (onStart)
        onStart();
    return starts;
}

void RecordingSink::present(const QPVEncodedVideoFrame &frame)
{
    const Guard guard(this);
    log(QStringLiteral("present(%1)").arg(frame.meta().timestamp));
    if (onPresent)
        onPresent();
}

void RecordingSink::finish()
{
    const Guard guard(this);
    log(QStringLiteral("finish()"));
    if (onFinish)
        onFinish();
}

void RecordingSink::stop()
{
    const Guard guard(this);
    log(QStringLiteral("stop()"));
    if (onStop)
        onStop();
}

void RecordingSink::log(const QString &what) const
{
    CallLog::instance().add(m_name, what);
}
