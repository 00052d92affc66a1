// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "gate.h"

#include <QString>
#include <QStringList>

#include <mutex>

/*!
 * Catches Qt's log messages while it lives, as "warning veltra.palaver.capture: text".
 *
 * Threads: messages from any thread; built and destroyed on the test's thread, one at a time.
 *          Messages of the category "default" are kept and also passed on.
 */
class MessageLog
{
public:
    MessageLog();
    ~MessageLog();
    MessageLog(const MessageLog &) = delete;
    MessageLog &operator=(const MessageLog &) = delete;

    /*! All messages, or those that start with \a prefix. */
    QStringList messages(const QString &prefix = QString()) const;
    void clear();

    Gate gate; // holds up whoever logs, once the message is caught

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &text);

    QtMessageHandler m_previous;
    mutable std::mutex m_mutex; // guards m_messages
    QStringList m_messages;     // oldest first
};
