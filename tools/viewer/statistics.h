// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "framemeter.h"

#include <QAbstractVideoSurface>
#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>

namespace Viewer {

/*!
 * What a VideoOutput came to in the last second, and what the program took for it.
 *
 * Threads: the application thread.
 * Units:   pictures per second, milliseconds, pictures, percent of one core.
 */
class Statistics : public QObject
{
    Q_OBJECT
    Q_PROPERTY(Viewer::FrameMeter *meter MEMBER m_meter NOTIFY sourceChanged)
    /*! The VideoOutput's, while pictures of a camera or a decoder come to it. */
    Q_PROPERTY(QAbstractVideoSurface *surface READ surface WRITE setSurface NOTIFY sourceChanged)
    Q_PROPERTY(qreal delivered READ delivered NOTIFY changed) // per second, by the source
    Q_PROPERTY(qreal shown READ shown NOTIFY changed)         // per second
    Q_PROPERTY(qreal latency READ latency NOTIFY changed)     // mean; negative where unknown
    Q_PROPERTY(qreal worstLatency READ worstLatency NOTIFY changed)
    Q_PROPERTY(int queued READ queued NOTIFY changed)   // on their way to the surface
    Q_PROPERTY(int dropped READ dropped NOTIFY changed) // since the surface was set
    Q_PROPERTY(int missing READ missing NOTIFY changed) // the same, before they were delivered
    Q_PROPERTY(qreal cpu READ cpu NOTIFY changed)
public:
    explicit Statistics(QObject *parent = nullptr);

    QAbstractVideoSurface *surface() const { return m_surface; }
    void setSurface(QAbstractVideoSurface *surface);
    qreal delivered() const { return m_delivered; }
    qreal shown() const { return m_shown; }
    qreal latency() const { return m_latency; }
    qreal worstLatency() const { return m_worstLatency; }
    int queued() const { return m_queued; }
    int dropped() const { return m_dropped; }
    int missing() const { return m_missing; }
    qreal cpu() const { return m_cpu; }

signals:
    void sourceChanged();
    void changed();

private:
    void onTick();
    void readOutput(double seconds);

    FrameMeter *m_meter = nullptr; // QML's; no tick comes between the end of one and the other
    QPointer<QAbstractVideoSurface> m_surface;
    QTimer m_tick;
    QElapsedTimer m_time; // since the last tick
    qint64 m_cpuAtTick = 0;
    quint64 m_deliveredAtTick = 0;
    qreal m_delivered = 0;
    qreal m_shown = 0;
    qreal m_latency = -1;
    qreal m_worstLatency = -1;
    int m_queued = 0;
    int m_dropped = 0;
    int m_missing = 0;
    qreal m_cpu = 0;
};

} // namespace Viewer
