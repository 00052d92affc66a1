// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoSurface>
#include <QList>
#include <QVideoFrame>
#include <QVideoSurfaceFormat>

#include <functional>
#include <mutex>
#include <vector>

class QThread;

/*!
 * A surface that takes what the test says and records what happens to it.
 *
 * Threads: answers are copies that share nothing with the surface. Recorded facts may be read on any; the script is set before the surface is used, or on
 *          its thread.
 */
class RecordingSurface : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    using Formats = QList<QVideoFrame::PixelFormat>;

    explicit RecordingSurface(const Formats &formats = { QVideoFrame::Format_NV12 });
    ~RecordingSurface() override;

    // The script, followed on the surface's thread
    Formats formats;
    bool startSucceeds = true;
    bool keepFrames = true;
    std::function<bool(const QVideoSurfaceFormat &)> accepts; // unset: what formats says
    std::function<void()> onStart;                            // before it is active
    std::function<bool(const QVideoFrame &)> onPresent;       // unset: true
    std::function<void()> onStop;                             // before it is inactive

    void fail(Error error) { setError(error); }

    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override;
    bool isFormatSupported(const QVideoSurfaceFormat &format) const override;
    bool start(const QVideoSurfaceFormat &format) override;
    void stop() override;
    bool present(const QVideoFrame &frame) override;

    int presented() const;                        // calls of present()
    QList<qint64> startTimes() const;             // of the frames, microseconds
    QList<QVideoFrame> frames() const;            // empty without keepFrames
    QList<QVideoSurfaceFormat> started() const;   // arguments of start()
    QStringList calls() const;                    // "start", "present", "stop" in order
    std::vector<const QThread *> threads() const; // of every call, questions included

private:
    void record(const char *call) const;

    mutable std::mutex m_mutex; // guards all below
    std::vector<qint64> m_startTimes;
    std::vector<QVideoFrame> m_frames;
    std::vector<QVideoSurfaceFormat> m_started;
    mutable std::vector<const char *> m_calls;
    mutable std::vector<const QThread *> m_threads;
};
