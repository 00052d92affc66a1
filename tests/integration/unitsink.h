// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QList>
#include <QMutex>

#include <palaver/qpvencodedvideoframe.h>
#include <palaver/qpvencodedvideosink.h>

/*!
 * An application's own sink: keeps the units and counts the other calls.
 *
 * Threads: the encoder's calls on any thread, the rest on the test's.
 */
class UnitSink : public QPVEncodedVideoSink
{
public:
    struct Calls
    {
        int starts = 0;
        int finishes = 0;
        int stops = 0;
        int lateUnits = 0; // presented while not started
    };

    void release() override {}
    bool isFormatSupported(const QVideoEncoderSettings &) override { return true; }
    bool start(const QVideoEncoderSettings &settings) override;
    void present(const QPVEncodedVideoFrame &frame) override;
    void finish() override;
    void stop() override;

    /*! Drops the units from now on, to stay small in a long run; they are still counted. */
    void countOnly();

    Calls calls() const;
    int count() const;
    qint64 bytes() const;
    QList<QPVEncodedVideoFrame> units() const;

private:
    mutable QMutex m_mutex; // guards all below
    QList<QPVEncodedVideoFrame> m_units;
    int m_count = 0;
    qint64 m_bytes = 0;
    bool m_keeps = true;
    bool m_isStarted = false;
    Calls m_calls;
};
