// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QObject>

class QSocketNotifier;

namespace Tool {

/*!
 * Turns the first SIGINT or SIGTERM into a signal; a second one ends the program as usual.
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
};

} // namespace Tool
