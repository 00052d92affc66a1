// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>

#include <palaver/qpvencodedvideosink.h>

#include <atomic>
#include <functional>

/*!
 * A sink that does what it is told and logs its calls under its name, "sink" by default.
 *
 * Threads: the flags from any thread, the functions are set while nothing calls; they run within
 *          the call of the same name, after it is logged.
 */
class RecordingSink : public QPVEncodedVideoSink
{
public:
    explicit RecordingSink(const QString &name = QStringLiteral("sink"));

    void release() override;
    bool isFormatSupported(const QVideoEncoderSettings &settings) override;
    bool start(const QVideoEncoderSettings &settings) override;
    void present(const QPVEncodedVideoFrame &frame) override;
    void finish() override;
    void stop() override;

    std::atomic<bool> supportsFormat { true };
    std::atomic<bool> starts { true };
    std::atomic<int> callsAtOnce { 0 }; // most calls ever under way together on different threads

    std::function<void()> onFormat;
    std::function<void()> onStart;
    std::function<void()> onPresent;
    std::function<void()> onFinish;
    std::function<void()> onStop;

private:
    class Guard;
    void log(const QString &what) const;

    const QString m_name;
    std::atomic<int> m_calls { 0 };
};

/*! A sink of another kind. */
class OtherSink : public QPVSink
{
};
