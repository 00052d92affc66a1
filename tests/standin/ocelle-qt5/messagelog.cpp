// SPDX-License-Identifier: BSD-3-Clause
#include "messagelog.h"

#include <QtGlobal>

#include <cstring>
#include <mutex>

namespace {

std::mutex mutex; // guards all below
QStringList collected;
QtMessageHandler previous = nullptr;

void collect(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type == QtWarningMsg && context.category &&
        std::strcmp(context.category, "ocelle.videooutput") == 0) {
        std::lock_guard<std::mutex> lock(mutex);
        collected.append(text);
        return;
    }
    previous(type, context, text);
}

} // namespace

MessageLog::MessageLog()
{
    {
        std::lock_guard<std::mutex> lock(mutex);
        collected.clear();
    }
    previous = qInstallMessageHandler(collect);
}

MessageLog::~MessageLog()
{
    qInstallMessageHandler(previous);
}

QStringList MessageLog::warnings() const
{
    std::lock_guard<std::mutex> lock(mutex);
    return collected;
}
