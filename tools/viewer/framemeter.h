// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoFilter>
#include <QMutex>

#include <memory>

namespace Viewer {

/*!
 * Counts the pictures that a VideoOutput draws and, where they carry a camera's time, how old they
 * are by then. Changes none of them.
 *
 * Threads: the application thread, but for the counting, which is on the one that draws.
 * Units:   microseconds of the steady clock.
 */
class FrameMeter : public QAbstractVideoFilter
{
    Q_OBJECT
public:
    struct Counts
    {
        qint64 pictures = 0;
        qint64 timed = 0;      // of those, with a time that can be one of a camera
        qint64 latencySum = 0; // of the timed ones
        qint64 worstLatency = 0;
    };

    explicit FrameMeter(QObject *parent = nullptr);

    QVideoFilterRunnable *createFilterRunnable() override; // on the thread that draws

    /*! What was counted since the last call. */
    Counts take();

    /*! The counts, which both threads write. */
    class Store
    {
    public:
        void add(qint64 latency); // negative for a picture without a camera's time
        Counts take();

    private:
        QMutex m_mutex; // guards m_counts
        Counts m_counts;
    };

private:
    const std::shared_ptr<Store> m_store;
};

} // namespace Viewer
