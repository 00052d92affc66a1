// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QElapsedTimer>

/*!
 * Measures a preview: CPU time per picture once it runs, the rate, and when the first picture came.
 *
 * Threads: the application's, but for count(), which is for the one thread that the pictures come on.
 * Units:   pictures; prints microseconds, pictures per second and milliseconds.
 */
class PreviewMeter
{
public:
    explicit PreviewMeter(quint64 pictures); // how many to measure

    void start();
    /*! One picture more; the last one ends run(). */
    void count();
    /*! Serves events until all pictures came; false, with a word on standard error, if they do not. */
    bool run();
    void print() const;

private:
    const quint64 m_pictures;
    quint64 m_count = 0;
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceWarmUp;
    double m_firstMilliseconds = 0;
    double m_cpu = 0;     // seconds
    double m_seconds = 0; // that the pictures took
};
