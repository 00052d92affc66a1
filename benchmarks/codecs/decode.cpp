// SPDX-License-Identifier: BSD-3-Clause
// Compressed pictures through the whole decoder service: handed to its control, pictures taken by a
// surface. Prints CPU time per picture (microseconds), the median time from decode() to present()
// (milliseconds), peak memory (KB), and the time from start() to the first picture (milliseconds).
//
// The codec "none" is a decoder that has its pictures ready, of the size that stands for the file,
// and so are the units: what is left is the way there and back. "one" is the same with one picture
// at a time, so that each has to wake the decoder's thread.
//
// usage: bench-decode CODEC FILE|SIZE PICTURES [--paced]

#include "codecmeter.h"
#include "countingsurface.h"
#include "encodedstream.h"
#include "ocelleprovider.h"
#include "readycodecmanager.h"

#include <QCoreApplication>
#include <QMediaService>
#include <QStringList>
#include <QTimer>
#include <QVideoEncoderSettings>
#include <QVideoRendererControl>

#include <palaver/qpvdecodecontrol.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <utility>
#include <vector>

extern "C" {
#include <libavcodec/packet.h>
}

namespace {

constexpr int Patience = 10000; // milliseconds without a picture

/*! How many pictures are in the service at a time. */
struct Filling
{
    int most;     // its queue takes 20, that of pictures to be shown 32
    int refillAt; // so that the decoder is not woken for each
};
constexpr Filling Many { 16, 4 };
constexpr Filling Few { 8, 3 }; // each picture takes memory
constexpr Filling One { 1, 0 };

/*! What is to be decoded: the number of a picture in, a unit out. */
using UnitFunction = std::function<QPVEncodedVideoFrame(std::uint64_t)>;

class Decoding
{
public:
    Decoding(QMediaService *service, UnitFunction unit, Filling filling, std::uint64_t pictures)
        : m_unit(std::move(unit))
        , m_filling(filling)
        , m_pictures(pictures)
        , m_meter(pictures)
        , m_surface([this] { onPicture(); })
        , m_control(service->requestControl<QPVDecodeControl *>())
    {
        service->requestControl<QVideoRendererControl *>()->setSurface(&m_surface);
        // An error comes on the decoder's thread; the application's ends it all.
        QObject::connect(
                m_control, &QPVDecodeControl::error, qApp,
                [](QPVDecoder::Error, const QString &text) {
                    std::fprintf(stderr, "%s\n", qPrintable(text));
                    QCoreApplication::exit(1);
                },
                Qt::QueuedConnection);
        QObject::connect(&m_patience, &QTimer::timeout, qApp, [this] {
            std::fprintf(stderr, "only %llu pictures came\n", m_shown);
            QCoreApplication::exit(1);
        });
        QObject::connect(&m_beat, &QTimer::timeout, [this] { onBeat(); });
        m_beat.setTimerType(Qt::PreciseTimer);
        m_beat.setSingleShot(true);
    }

    bool run(const QVideoEncoderSettings &settings, bool paced)
    {
        m_isPaced = paced;
        m_patience.start(Patience + int(paced ? m_pictures * 1000 / 30 : 0));
        m_meter.start();
        if (!m_control->start(settings))
            return false;
        m_firstBeat = CodecMeter::Clock::now();
        if (paced)
            onBeat();
        else
            fill(m_comesLate ? m_filling.most : 1);
        return QCoreApplication::exec() == 0;
    }

    void print() { m_meter.printWithFirst(); }

private:
    /*! Hands over units until there are \a most inside. */
    void fill(int most)
    {
        while (m_given < m_pictures && m_given - m_shown < std::uint64_t(most)) {
            const QPVEncodedVideoFrame frame = m_unit(m_given);
            m_meter.begin(m_given);
            if (!m_control->decode(frame))
                qFatal("The service takes no unit");
            ++m_given;
        }
        if (m_given == m_pictures)
            m_control->drain(); // what a decoder on several threads keeps
    }

    void onPicture()
    {
        if (m_shown == m_given)
            qFatal("more pictures come out than went in");
        m_meter.count(m_shown++, 0);
        if (m_shown == m_pictures)
            QCoreApplication::quit();
        else if (!m_isPaced && m_given < m_pictures &&
                 (m_shown == 1 || m_given - m_shown <= std::uint64_t(m_filling.refillAt)))
            fill(m_filling.most);
    }

    void onBeat()
    {
        fill(int(m_given - m_shown) + 1);
        if (m_given == m_pictures)
            return;
        using namespace std::chrono;
        const auto next = m_firstBeat + nanoseconds(std::nano::den) * m_given / 30;
        const auto left = ceil<milliseconds>(next - CodecMeter::Clock::now());
        m_beat.start(std::max(milliseconds(0), left));
    }

    // With several pictures at a time the first comes out only when others are in.
    const bool m_comesLate = qgetenv("OCELLE_DECODER_THREADS") == "throughput";
    const UnitFunction m_unit;
    const Filling m_filling;
    const std::uint64_t m_pictures;
    bool m_isPaced = false;
    std::uint64_t m_given = 0; // pictures
    quint64 m_shown = 0;       // pictures
    CodecMeter m_meter;
    CountingSurface m_surface;
    QPVDecodeControl *const m_control;
    QTimer m_patience;
    QTimer m_beat;
    CodecMeter::Clock::time_point m_firstBeat;
};

QPVEncodedVideoFrame unitOf(const AVPacket &packet, std::uint64_t number)
{
    const auto type = packet.flags & AV_PKT_FLAG_KEY ? QPVEncodedVideoFrame::KeyFrame
                                                     : QPVEncodedVideoFrame::DeltaFrame;
    return QPVEncodedVideoFrame(reinterpret_cast<const char *>(packet.data),
                                static_cast<unsigned long>(packet.size),
                                { type, number * 1000000 / 30 });
}

/*! One that is ready, so that making it does not count. */
QPVEncodedVideoFrame readyUnit(std::uint64_t)
{
    static const std::vector<char> bytes(4000);
    static const QPVEncodedVideoFrame unit(bytes.data(), bytes.size(),
                                           { QPVEncodedVideoFrame::DeltaFrame, 0 });
    return unit;
}

bool measure(QMediaService *service, const QVideoEncoderSettings &settings,
             const UnitFunction &unit, Filling filling, const QStringList &arguments)
{
    const std::uint64_t count = arguments[3].toULongLong();
    if (count < 2)
        qFatal("no pictures");
    Decoding decoding(service, unit, filling, count);
    if (!decoding.run(settings, arguments.value(4) == QLatin1String("--paced")))
        return false;
    decoding.print();
    return true;
}

bool decodeNothing(const QStringList &arguments)
{
    const QStringList size = arguments[2].split(QLatin1Char('x'));
    QVideoEncoderSettings settings;
    settings.setCodec(QStringLiteral("video/h264"));
    settings.setResolution(size.value(0).toInt(), size.value(1).toInt());
    ReadyCodecManager codecs;
    OcelleProvider provider(OcelleManager(), &codecs);
    QMediaService *const service = provider.create(QStringLiteral("veltra.palaver.decoder"));
    const bool isDone = measure(service, settings, readyUnit,
                                arguments[1] == QLatin1String("one") ? One : Many, arguments);
    provider.release(service);
    return isDone;
}

bool decodeFile(const QStringList &arguments)
{
    const EncodedStream stream(qPrintable(arguments[2]));
    if (stream.isEmpty())
        return false;
    QVideoEncoderSettings settings;
    settings.setCodec(QStringLiteral("video/") + arguments[1]);
    settings.setResolution(stream.width(), stream.height());
    OcelleProvider provider(OcelleManager(), OcelleCodecManager());
    QMediaService *const service = provider.create(QStringLiteral("veltra.palaver.decoder"));
    const auto unit = [&stream](std::uint64_t i) { return unitOf(*stream.unit(i), i); };
    const bool isDone = measure(service, settings, unit, Few, arguments);
    provider.release(service);
    return isDone;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() < 4)
        qFatal("usage: bench-decode CODEC FILE|SIZE PICTURES [--paced]");
    const bool isReady =
            arguments[1] == QLatin1String("none") || arguments[1] == QLatin1String("one");
    return (isReady ? decodeNothing(arguments) : decodeFile(arguments)) ? 0 : 1;
}
