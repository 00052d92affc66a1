// SPDX-License-Identifier: BSD-3-Clause
// Decodes many small pictures with each codec and checks the number in each: the stream is started
// anew, drained and begun with another size. Fails if memory keeps growing.
//
// usage: decoder-soak PICTURES
#include "decodingclient.h"
#include "encodingclient.h"
#include "rawpicture.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QMediaServiceProviderPlugin>

#include <patternreader.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int StreamLength = 250;     // pictures
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

QVideoFrame patternFrame(QSize size, int number)
{
    const RawPicture picture =
            RawPicture::pattern(size.width(), size.height(), std::uint32_t(number));
    QVideoFrame frame(int(picture.y.size() + 2 * picture.cb.size()), size, size.width(),
                      QVideoFrame::Format_YUV420P);
    frame.map(QAbstractVideoBuffer::WriteOnly);
    uchar *to = std::copy(picture.y.begin(), picture.y.end(), frame.bits());
    to = std::copy(picture.cb.begin(), picture.cb.end(), to);
    std::copy(picture.cr.begin(), picture.cr.end(), to);
    frame.unmap();
    return frame;
}

QList<QByteArray> stream(const QString &codec, QSize size)
{
    QList<QByteArray> units;
    EncodingClient encoder;
    if (!encoder.start(EncodingClient::encoderSettings(codec, 200000), size))
        return units;
    for (int i = 0; i < StreamLength; ++i) {
        if (!encoder.encode(patternFrame(size, i)))
            return {};
    }
    if (!encoder.waitForUnits())
        return units;
    for (const QPVEncodedVideoFrame &unit : encoder.sink.units())
        units.append(unit.data());
    return units;
}

bool soak(const QString &codec, int pictures)
{
    const QList<QByteArray> streams[] = { stream(codec, QSize(160, 120)),
                                          stream(codec, QSize(176, 144)) };
    QElapsedTimer time;
    time.start();
    DecodingClient client;
    client.surface.keepsTimes = false;
    int wrong = 0;
    int shown = 0;
    client.surface.onPicture = [&](const RawPicture &picture) {
        const auto reading = Veltra::Ocelle::readPattern(picture.y.data(), picture.width,
                                                         picture.width, picture.height);
        wrong += reading && int(reading->sequence) == shown % StreamLength ? 0 : 1;
        ++shown;
    };
    long settled = 0;
    long most = 0;
    int starts = 0;
    for (int i = 0; i < pictures; ++i) {
        const int round = i / StreamLength;
        const QList<QByteArray> &units = streams[round % 2];
        if (units.size() != StreamLength)
            return false;
        // Every fourth time another decoder, else the same one goes on.
        if (i % (4 * StreamLength) == 0) {
            if ((i > 0 && !client.drain()) || !client.start(codec))
                return false;
            ++starts;
        }
        if (!client.decode(units.at(i % StreamLength), i, i % StreamLength == 0))
            return false;
        if (i == pictures / 8)
            settled = residentMemory();
        if (i % StreamLength == 0)
            most = std::max(most, residentMemory());
    }
    const bool isDrained = client.drain();
    const long last = residentMemory();
    std::printf("%s: %d pictures in, %d out, %d wrong, %d starts, %d errors; %ld KiB after an "
                "eighth, %ld at the end, at most %ld; %.0f s\n",
                qPrintable(codec), client.accepted(), shown, wrong, starts, client.errors.size(),
                settled, last, most, double(time.elapsed()) / 1000);
    std::fflush(stdout);
    return isDrained && client.errors.isEmpty() && shown == pictures && wrong == 0 &&
           last - settled < MostGrowth;
}

} // namespace

int main(int argc, char **argv)
{
    const int pictures = argc == 2 ? std::atoi(argv[1]) : 0;
    if (pictures < StreamLength || pictures > 100000000) {
        std::fprintf(stderr, "usage: decoder-soak PICTURES (of each codec, from %d on)\n",
                     StreamLength);
        return 2;
    }
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("veltra.palaver.*.debug=false"));
    DecodingClient asked;
    if (!asked.isValid()) {
        std::fprintf(stderr, "there is no decoder service\n");
        return 1;
    }
    bool isGood = true;
    for (const QString &codec : asked.control->supportedCodecs(false))
        isGood = soak(codec, pictures) && isGood;
    std::puts(isGood ? "memory is constant, nothing is lost" : "this is not as it should be");
    return isGood ? 0 : 1;
}
