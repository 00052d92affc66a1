// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QEvent>
#include <QObject>

/*!
 * Counts the events of one type that an object gets.
 *
 * Threads: that of the object.
 */
class EventCounter : public QObject
{
public:
    EventCounter(QObject *watched, int type)
        : m_type(type)
    {
        watched->installEventFilter(this);
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == m_type;
        return false;
    }

    int count = 0;

private:
    const int m_type;
};
