// SPDX-License-Identifier: BSD-3-Clause
// Encodes hours of video faster than they last, with each codec: rotation and bit rate change, key
// frames are asked for, the encoder is stopped and started again. Fails if memory keeps growing.
//
// usage: encoder-soak HOURS
#include "encodingclient.h"
#include "rawpicture.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QMediaServiceProviderPlugin>
#include <QVideoEncoderSettingsControl>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int Width = 160; // pixels
constexpr int Height = 120;
constexpr int Rate = 30; // pictures per second
constexpr int Minute = 60 * Rate;
constexpr long MostGrowth = 4 * 1024; // KiB after the first eighth

/*! Resident memory of this process, in KiB. */
long residentMemory()
{
    long pages = 0;
    long resident = 0;
    std::FILE *const file = std::fopen("/proc/self/statm", "r");
    if (!file)
        return 0;
    if (std::fscanf(file, "%ld %ld", &pages, &resident) != 2)
        resident = 0;
    std::fclose(file);
    return resident * 4;
}

QVideoFrame patternFrame(int number)
{
    const RawPicture picture = RawPicture::pattern(Width, Height, std::uint32_t(number));
    QVideoFrame frame(Width * Height * 3 / 2, QSize(Width, Height), Width,
                      QVideoFrame::Format_YUV420P);
    frame.map(QAbstractVideoBuffer::WriteOnly);
    uchar *to = std::copy(picture.y.begin(), picture.y.end(), frame.bits());
    to = std::copy(picture.cb.begin(), picture.cb.end(), to);
    std::copy(picture.cr.begin(), picture.cr.end(), to);
    frame.unmap();
    return frame;
}

/*! What an application changes while it records; false where that fails. */
bool changeSomething(EncodingClient &client, int minute)
{
    QVideoEncoderSettings changed = client.settings->videoSettings();
    changed.setBitRate(100000 + minute % 5 * 50000);
    if (minute % 3 == 0)
        changed.setEncodingOption(QStringLiteral("rotate"), minute % 4 * 90);
    if (!client.waitForUnits()) // so that nothing is queued that a restart would drop
        return false;
    if (minute % 10 == 0 && (!client.stop() || !client.start(changed, QSize(Width, Height), Rate)))
        return false;
    client.settings->setVideoSettings(changed);
    return true;
}

/*! A restart refuses pictures for a moment. */
bool soak(const QString &codec, int pictures, const std::vector<QVideoFrame> &frames)
{
    QElapsedTimer time;
    time.start();
    EncodingClient client;
    client.sink.countOnly();
    if (!client.start(EncodingClient::encoderSettings(codec, 100000), QSize(Width, Height), Rate))
        return false;
    long settled = 0;
    long most = 0;
    for (int i = 0; i < pictures; ++i) {
        QVideoFrame frame = frames[std::size_t(i) % frames.size()];
        frame.setStartTime(qint64(i) * 1000000 / Rate);
        if (i > 0 && i % Minute == 0 && !changeSomething(client, i / Minute))
            return false;
        if (!client.encode(frame))
            return false;
        if (i == pictures / 8)
            settled = residentMemory();
        if (i % Minute == 0)
            most = qMax(most, residentMemory());
    }
    const bool isComplete = client.waitForUnits();
    std::printf(
            "%s: %d pictures in, %d units out, %lld bytes, %d starts, %d errors; %ld KiB after an "
            "eighth, %ld at the end, at most %ld; %.0f s\n",
            qPrintable(codec), client.accepted(), client.sink.count(),
            static_cast<long long>(client.sink.bytes()), client.sink.calls().starts,
            client.errors.size(), settled, residentMemory(), most, double(time.elapsed()) / 1000);
    std::fflush(stdout);
    return isComplete && client.errors.isEmpty() && residentMemory() - settled < MostGrowth;
}

} // namespace

int main(int argc, char **argv)
{
    const double hours = argc == 2 ? std::atof(argv[1]) : 0;
    if (!(hours > 0 && hours <= 100)) {
        std::fprintf(stderr, "usage: encoder-soak HOURS (of video, up to 100)\n");
        return 2;
    }
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("veltra.palaver.*.debug=false"));
    std::vector<QVideoFrame> frames;
    for (int i = 0; i < 2 * Rate; ++i)
        frames.push_back(patternFrame(i));
    EncodingClient asked;
    if (!asked.isValid()) {
        std::fprintf(stderr, "there is no encoder service\n");
        return 1;
    }
    bool isGood = true;
    for (const QString &codec : asked.control->supportedCodecs(false))
        isGood = soak(codec, int(hours * 60) * Minute, frames) && isGood;
    std::puts(isGood ? "memory is constant, nothing is lost" : "this is not as it should be");
    return isGood ? 0 : 1;
}
