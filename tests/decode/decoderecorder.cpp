// SPDX-License-Identifier: BSD-3-Clause
#include "decoderecorder.h"

#include "calllog.h"

#include <palaver/qpvdecodecontrol.h>

DecodeRecorder::DecodeRecorder(QPVDecodeControl *control)
{
    const auto log = [](const QString &what) {
        CallLog::instance().add(QStringLiteral("control"), what);
    };
    const auto errorText = [](QPVDecoder::Error code, const QString &text) {
        return QStringLiteral("%1 %2").arg(static_cast<int>(code)).arg(text);
    };
    connect(
            control, &QPVDecodeControl::statusChanged, this,
            [log](QPVDecoder::Status status) {
                log(QStringLiteral("statusChanged(%1)").arg(static_cast<int>(status)));
            },
            Qt::DirectConnection);
    connect(
            control, &QPVDecodeControl::error, this,
            [log, errorText](QPVDecoder::Error code, const QString &text) {
                log(QStringLiteral("error(%1)").arg(errorText(code, text)));
            },
            Qt::DirectConnection);
    connect(control, &QPVDecodeControl::statusChanged, this,
            [this](QPVDecoder::Status status) { statuses.append(static_cast<int>(status)); });
    connect(control, &QPVDecodeControl::error, this,
            [this, errorText](QPVDecoder::Error code, const QString &text) {
                errors.append(errorText(code, text));
            });
}
