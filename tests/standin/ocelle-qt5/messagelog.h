// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QStringList>

/*!
 * Collects the warnings of the video output's logging category while it lives; one at a time.
 *
 * Threads: messages may come from any.
 */
class MessageLog
{
public:
    MessageLog();
    ~MessageLog();

    QStringList warnings() const;
};
