// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QObject>

class QSocketNotifier;

namespace Tool {

/*!
 * Turns the first SIGINT, SIGTERM or SIGHUP into a signal. A second SIGINT or SIGTERM ends the program
 * as usual; a second SIGHUP does nothing, nor does the first one where it was ignored before.
 *
 * Threads: the thread it is made on. One object at a time.
 */
class Interruption : public QObject
{
    Q_OBJECT
public:
    explicit Interruption(QObject *parent = nullptr);
    ~Interruption() override;

signals:
    void interrupted();

private:
    int m_pipe[2] = { -1, -1 };
    bool m_takesHangUp = false;
};

} // namespace Tool
