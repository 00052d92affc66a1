// SPDX-License-Identifier: BSD-3-Clause
#include "messagelog.h"

#include <QLoggingCategory>

#include <atomic>

namespace {

std::atomic<MessageLog *> currentLog { nullptr };

QString typeName(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return QStringLiteral("debug");
    case QtInfoMsg:
        return QStringLiteral("info");
    case QtWarningMsg:
        return QStringLiteral("warning");
    case QtCriticalMsg:
        return QStringLiteral("critical");
    case QtFatalMsg:
        return QStringLiteral("fatal");
    }
    return QString();
}

} // namespace

MessageLog::MessageLog()
{
    currentLog = this;
    m_previous = qInstallMessageHandler(&MessageLog::handle);
}

MessageLog::~MessageLog()
{
    qInstallMessageHandler(m_previous);
    currentLog = nullptr;
}

QStringList MessageLog::messages(const QString &prefix) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    QStringList result;
    for (const QString &message : m_messages) {
        if (message.startsWith(prefix))
            result.append(message);
    }
    return result;
}

void MessageLog::clear()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_messages.clear();
}

void MessageLog::handle(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    MessageLog *log = currentLog;
    if (!log)
        return;
    const QString category = QString::fromUtf8(context.category);
    {
        std::lock_guard<std::mutex> lock(log->m_mutex);
        log->m_messages.append(typeName(type) + QLatin1Char(' ') + category + QStringLiteral(": ") +
                               text);
    }
    log->gate.pass();
    if (log->m_previous && category == QLatin1String("default"))
        log->m_previous(type, context, text);
}
