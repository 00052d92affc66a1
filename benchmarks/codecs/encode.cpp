// SPDX-License-Identifier: BSD-3-Clause
// Raw pictures through the whole encoder service: handed to its control, units taken by a sink.
// Prints CPU time per picture (microseconds), the median time from encode() to present()
// (milliseconds), peak memory (KB), and bytes put out.
//
// The codec "none" is an encoder that has its unit ready: what is left is the way there and back.
// "one" is the same with one picture at a time, so that each has to wake the encoder's thread.
//
// usage: bench-encode CODEC RAW WIDTH HEIGHT PICTURES [--paced]

#include "beat.h"
#include "codecmeter.h"
#include "ocelleprovider.h"
#include "rawpictures.h"
#include "readycodecmanager.h"

#include <QAbstractVideoBuffer>
#include <QCoreApplication>
#include <QMediaService>
#include <QVideoEncoderSettingsControl>
#include <QVideoFrame>
#include <QVideoSurfaceFormat>

#include <palaver/qpvencodecontrol.h>
#include <palaver/qpvencodedvideosink.h>
#include <palaver/qpvencodedvideosourcecontrol.h>
#include <semaphore.h>

#include <atomic>

namespace {

/*! How many pictures are in the service at a time. */
struct Filling
{
    int most;     // its queue takes 20
    int refillAt; // so that the application thread is not woken for each
};
constexpr Filling Many { 16, 4 };
constexpr Filling One { 1, 0 };

class Sink : public QPVEncodedVideoSink
{
public:
    Sink(CodecMeter &meter, Filling filling, std::uint64_t pictures)
        : m_meter(meter)
        , m_filling(filling)
        , m_pictures(pictures)
    {
        sem_init(&m_room, 0, 0);
    }
    ~Sink() override { sem_destroy(&m_room); }

    void release() override {}
    bool isFormatSupported(const QVideoEncoderSettings &) override { return true; }
    bool start(const QVideoEncoderSettings &) override { return true; }
    void present(const QPVEncodedVideoFrame &frame) override
    {
        m_meter.count(m_count++, std::size_t(frame.data().size()));
        if (--m_inside == m_filling.refillAt || m_count == m_pictures)
            sem_post(&m_room);
    }
    void finish() override {}
    void stop() override {}

    void add() { ++m_inside; }
    void waitForRoom() { waitUntilInside(m_filling.most - 1, m_filling.refillAt); }
    void waitUntilDone() { waitUntilInside(0, 0); }

private:
    /*! Where there are more than \a most, waits until there are no more than \a few. */
    void waitUntilInside(int most, int few)
    {
        if (m_inside <= most)
            return;
        while (m_inside > few)
            sem_wait(&m_room);
    }

    CodecMeter &m_meter;
    const Filling m_filling;
    const std::uint64_t m_pictures;
    std::uint64_t m_count = 0;
    std::atomic<int> m_inside { 0 };
    sem_t m_room;
};

/*! A picture in memory of somebody else. */
class LentBuffer : public QAbstractVideoBuffer
{
public:
    LentBuffer(const std::uint8_t *data, int size, int stride)
        : QAbstractVideoBuffer(NoHandle)
        , m_data(data)
        , m_size(size)
        , m_stride(stride)
    {
    }
    MapMode mapMode() const override { return m_mode; }
    uchar *map(MapMode mode, int *size, int *stride) override
    {
        m_mode = mode;
        *size = m_size;
        *stride = m_stride;
        return const_cast<uchar *>(m_data); // only read
    }
    void unmap() override { m_mode = NotMapped; }

private:
    const std::uint8_t *const m_data;
    const int m_size;
    const int m_stride;
    MapMode m_mode = NotMapped;
};

class Encoding
{
public:
    Encoding(QMediaService *service, const RawPictures &pictures, Sink &sink)
        : m_pictures(pictures)
        , m_sink(sink)
        , m_control(service->requestControl<QPVEncodeControl *>())
        , m_settings(service->requestControl<QVideoEncoderSettingsControl *>())
        , m_source(service->requestControl<QPVEncodedVideoSourceControl *>())
    {
        QObject::connect(m_control, &QPVEncodeControl::statusChanged,
                         [this](QPVEncoder::Status status) { m_told = status; });
    }

    bool start(const QString &codec)
    {
        QVideoEncoderSettings settings;
        settings.setCodec(QStringLiteral("video/") + codec);
        settings.setBitRate(1000000);
        settings.setEncodingMode(QMultimedia::ConstantBitRateEncoding);
        m_settings->setVideoSettings(settings);
        m_source->addSink(&m_sink);
        QVideoSurfaceFormat format(QSize(m_pictures.width(), m_pictures.height()),
                                   QVideoFrame::Format_YUV420P);
        format.setFrameRate(30);
        if (!m_control->start(format))
            return false;
        waitFor(QPVEncoder::StartingStatus);
        return true;
    }

    void encode(std::uint64_t i)
    {
        const QVideoFrame frame(
                new LentBuffer(m_pictures.luma(i), int(m_pictures.size()), m_pictures.width()),
                QSize(m_pictures.width(), m_pictures.height()), QVideoFrame::Format_YUV420P);
        m_sink.add();
        if (!m_control->encode(frame))
            qFatal("The service takes no picture");
    }

    /*! Until the application thread has been told: the worker waits for that. */
    void waitFor(QPVEncoder::Status status)
    {
        while (m_told != status)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }

private:
    const RawPictures &m_pictures;
    Sink &m_sink;
    QPVEncodeControl *const m_control;
    QVideoEncoderSettingsControl *const m_settings;
    QPVEncodedVideoSourceControl *const m_source;
    QPVEncoder::Status m_told = QPVEncoder::UnloadedStatus;
};

void run(Encoding &encoding, Sink &sink, CodecMeter &meter, std::uint64_t count, bool paced)
{
    Beat beat;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (paced)
            beat.wait();
        meter.begin(i);
        encoding.encode(i);
        if (i == 0)
            encoding.waitFor(QPVEncoder::ActiveStatus);
        sink.waitForRoom();
    }
    sink.waitUntilDone();
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() < 6)
        qFatal("usage: bench-encode CODEC RAW WIDTH HEIGHT PICTURES [--paced]");
    const RawPictures pictures(argv[2], arguments[3].toInt(), arguments[4].toInt());
    const std::uint64_t count = arguments[5].toULongLong();
    if (pictures.isEmpty() || count < 2)
        qFatal("no pictures");
    const bool one = arguments[1] == QLatin1String("one");
    const bool ready = one || arguments[1] == QLatin1String("none");
    ReadyCodecManager readyCodecs;
    OcelleProvider provider(OcelleManager(), ready ? &readyCodecs : OcelleCodecManager());
    QMediaService *const service = provider.create(QStringLiteral("veltra.palaver.encoder"));
    if (!service)
        qFatal("no encoder service");
    CodecMeter meter(count);
    Sink sink(meter, one ? One : Many, count);
    Encoding encoding(service, pictures, sink);
    if (!encoding.start(ready ? QStringLiteral("h264") : arguments[1]))
        qFatal("the encoder does not start");
    run(encoding, sink, meter, count, arguments.value(6) == QLatin1String("--paced"));
    meter.print();
    provider.release(service);
    return 0;
}
