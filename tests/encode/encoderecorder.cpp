// SPDX-License-Identifier: BSD-3-Clause
#include "encoderecorder.h"

#include "calllog.h"

#include <palaver/qpvencodecontrol.h>

EncodeRecorder::EncodeRecorder(QPVEncodeControl *control)
{
    const auto log = [](const QString &what) {
        CallLog::instance().add(QStringLiteral("control"), what);
    };
    const auto errorText = [](QPVEncoder::Error code, const QString &text) {
        return QStringLiteral("%1 %2").arg(static_cast<int>(code)).arg(text);
    };
    connect(
            control, &QPVEncodeControl::statusChanged, this,
            [log](QPVEncoder::Status status) {
                log(QStringLiteral("statusChanged(%1)").arg(static_cast<int>(status)));
            },
            Qt::DirectConnection);
    connect(
            control, &QPVEncodeControl::error, this,
            [log, errorText](QPVEncoder::Error code, const QString &text) {
                log(QStringLiteral("error(%1)").arg(errorText(code, text)));
            },
            Qt::DirectConnection);
    connect(
            control, &QPVEncodeControl::encodedVideoFrame, this,
            [this, log](const QPVEncodedVideoFrame &frame) {
                {
                    QMutexLocker locker(&m_mutex);
                    m_frames.append(frame);
                }
                log(QStringLiteral("encodedVideoFrame(%1)").arg(frame.meta().timestamp));
            },
            Qt::DirectConnection);
    connect(
            control, &QPVEncodeControl::endOfStream, this,
            [log] { log(QStringLiteral("endOfStream()")); }, Qt::DirectConnection);

    connect(control, &QPVEncodeControl::statusChanged, this,
            [this](QPVEncoder::Status status) { statuses.append(static_cast<int>(status)); });
    connect(control, &QPVEncodeControl::error, this,
            [this, errorText](QPVEncoder::Error code, const QString &text) {
                errors.append(errorText(code, text));
            });
    connect(control, &QPVEncodeControl::endOfStream, this, [this] { ++endsOfStream; });
}

QList<QPVEncodedVideoFrame> EncodeRecorder::frames() const
{
    QMutexLocker locker(&m_mutex);
    return m_frames;
}
