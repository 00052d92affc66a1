// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QObject>
#include <QThread>

/*! In a debug build, stops the program where \a object is used off its own thread. */
inline void assertOnOwnThread(const QObject *object)
{
    Q_ASSERT_X(QThread::currentThread() == object->thread(), object->metaObject()->className(),
               "called off its own thread");
    Q_UNUSED(object)
}
