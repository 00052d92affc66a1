// SPDX-License-Identifier: BSD-3-Clause
// What a device's decoder reports, and compressed frames of an application, through the decode
// session onto a surface. The input is records: a byte that tells the kind, two of length, data.
#include "ocelledecodeservice.h"
#include "ocelleprovider.h"

#include <QAbstractVideoSurface>
#include <QCoreApplication>
#include <QVideoEncoderSettings>
#include <QVideoRendererControl>
#include <QVideoSurfaceFormat>

#include <ocelle/cameramanager.h>
#include <ocelle/codecmanager.h>
#include <ocelle/videodecoder.h>
#include <palaver/qpvdecodecontrol.h>
#include <palaver/qpvencodedvideoframe.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

using namespace Veltra::Ocelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

/*! Reads all that it is given, and gives it back. */
class Decoder : public VideoDecoder
{
public:
    bool initialize(DecoderConfig) override { return true; }
    bool decode(const unsigned char *data, std::uint64_t size, std::uint64_t, FrameType type,
                void (*release)(void *), void *argument) override
    {
        for (std::uint64_t i = 0; i < size; ++i)
            m_sum += data[i];
        release(argument);
        return type != FrameType::Delta || m_sum % 2 == 0;
    }
    void flush() override {}
    void drain() override {}
    void stop() override {}

    template <typename Report>
    void tell(Report report)
    {
        const std::lock_guard<std::mutex> lock(m_listenerMutex);
        report(m_listener);
    }

private:
    unsigned m_sum = 0; // worker thread
};

class Codecs : public CodecManager
{
public:
    bool prepare() override { return true; }
    bool isEncoderSupported(CodecType, bool) override { return false; }
    bool isDecoderSupported(CodecType, bool) override { return true; }
    std::shared_ptr<VideoEncoder> createVideoEncoder(CodecType, int) override { return {}; }
    std::shared_ptr<VideoDecoder> createVideoDecoder(CodecType, int) override
    {
        latest = std::make_shared<Decoder>();
        return latest;
    }
    std::vector<VideoCodecInfo> getVideoCodecs() override { return {}; }

    std::shared_ptr<Decoder> latest;
};

class NoCameras : public CameraManager
{
public:
    int getNumberOfCameras() override { return 0; }
    bool getCameraInfo(int, CameraInfo &) override { return false; }
    bool getCameraCapabilities(const CameraInfo &, std::vector<CameraCapability> &) override
    {
        return false;
    }
    std::shared_ptr<Camera> openCamera(const std::string &) override { return {}; }
};

/*! Reads the ends of all lines, and takes no viewport beyond the picture. */
class Surface : public QAbstractVideoSurface
{
public:
    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override
    {
        if (type != QAbstractVideoBuffer::NoHandle)
            return {};
        return { QVideoFrame::Format_NV12, QVideoFrame::Format_YUV420P };
    }

    bool start(const QVideoSurfaceFormat &format) override
    {
        if (!QRect(QPoint(0, 0), format.frameSize()).contains(format.viewport()))
            std::abort();
        return QAbstractVideoSurface::start(format);
    }

    bool present(const QVideoFrame &frame) override
    {
        QVideoFrame mapped = frame;
        if (frame.size() != surfaceFormat().frameSize() ||
            !mapped.map(QAbstractVideoBuffer::ReadOnly))
            std::abort();
        for (int plane = 0; plane < mapped.planeCount(); ++plane) {
            const int lines = plane ? (mapped.height() + 1) / 2 : mapped.height();
            const int samples = plane ? (mapped.width() + 1) / 2 : mapped.width();
            const int length = mapped.planeCount() == 2 && plane == 1 ? 2 * samples : samples;
            const int stride = mapped.bytesPerLine(plane);
            if (stride < length)
                std::abort();
            for (int line = 0; line < lines; ++line) {
                const uchar *const start = mapped.bits(plane) + line * stride;
                m_sum += start[0] + unsigned(start[length - 1]);
            }
        }
        mapped.unmap();
        return true;
    }

private:
    unsigned m_sum = 0;
};

/*! Made once and never taken down: there is one application in a process. */
class Application
{
public:
    Application();
    void run(const Bytes &input);

private:
    bool startAnew();
    void waitFor(QPVDecoder::Status status);
    void take(unsigned kind, const Bytes &data);
    void deliverPicture(const Bytes &data);

    int m_argc = 1;
    char m_name[8] = "session";
    char *m_argv[2] = { m_name, nullptr };
    QCoreApplication m_application { m_argc, m_argv };
    NoCameras m_cameras;
    Codecs m_codecs;
    OcelleProvider m_provider { &m_cameras, &m_codecs };
    OcelleDecodeService m_service { &m_provider, nullptr };
    QPVDecodeControl *const m_control =
            qobject_cast<QPVDecodeControl *>(m_service.requestControl(QPVDecodeControl_iid));
    QVideoRendererControl *const m_renderer = qobject_cast<QVideoRendererControl *>(
            m_service.requestControl(QVideoRendererControl_iid));
    Surface m_surface;
};

Application::Application()
{
    if (!m_control || !m_renderer)
        std::abort();
}

void Application::run(const Bytes &input)
{
    constexpr std::size_t headSize = 3; // bytes
    if (!startAnew())
        std::abort();
    for (std::size_t at = 0; at + headSize < input.size();) {
        const unsigned kind = input[at];
        const std::size_t told = input[at + 1] | std::size_t(input[at + 2]) << 8;
        at += headSize;
        const std::size_t length = std::min(told, input.size() - at);
        const auto start = input.begin() + std::ptrdiff_t(at);
        take(kind, Bytes(start, start + std::ptrdiff_t(length)));
        at += length;
    }
    m_control->drain(); // whatever was asked for before; all frames go through the decoder
    waitFor(QPVDecoder::UnloadedStatus);
    QCoreApplication::processEvents();
}

/*! Each input finds the session in the same state: a new output, and a decoder that waits. */
bool Application::startAnew()
{
    m_renderer->setSurface(nullptr);
    m_renderer->setSurface(&m_surface);
    QVideoEncoderSettings settings;
    settings.setCodec(QStringLiteral("video/h264"));
    if (!m_control->start(settings))
        return false;
    waitFor(QPVDecoder::StartingStatus);
    return true;
}

void Application::waitFor(QPVDecoder::Status status)
{
    while (m_control->status() != status)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void Application::take(unsigned kind, const Bytes &data)
{
    const std::string text(data.begin(), data.end());
    switch (kind % 8) {
    case 0:
        m_codecs.latest->tell([&](VideoDecoderListener *listener) {
            listener->onDecoderParameterChanged(VideoDecoderParameter::ViewportParameter, text);
        });
        break;
    case 1:
        deliverPicture(data);
        break;
    case 2:
        m_codecs.latest->tell(
                [&](VideoDecoderListener *listener) { listener->onDecoderError(text); });
        break;
    case 3:
        m_control->flush();
        break;
    case 4:
        m_control->drain();
        break;
    case 5:
        m_renderer->setSurface(m_renderer->surface() ? nullptr : &m_surface);
        break;
    case 6:
        QCoreApplication::processEvents();
        break;
    default:
        m_control->decode(QPVEncodedVideoFrame(
                text.data(), text.size(),
                { static_cast<QPVEncodedVideoFrame::FrameType>(kind / 8), quint64(text.size()) }));
    }
}

/*! Of memory that ends where the geometry that the data tells says it does. */
void Application::deliverPicture(const Bytes &data)
{
    constexpr unsigned largest = 256; // pixels, for speed
    std::uint16_t fields[5] = {};
    std::copy_n(data.begin(), std::min(data.size(), sizeof fields),
                reinterpret_cast<std::uint8_t *>(fields));
    const unsigned width = fields[0] % largest;
    const unsigned height = fields[1] % largest;
    const unsigned yStride = fields[2] % (2 * largest);
    const unsigned cStride = fields[3] % (2 * largest);
    const unsigned step = fields[4] % 4;
    const unsigned chromaWidth = (width + 1) / 2;
    const unsigned chromaHeight = (height + 1) / 2;
    const Bytes y(height ? yStride * (height - 1) + width : 0, 1);
    const Bytes chroma(chromaHeight && chromaWidth
                               ? cStride * (chromaHeight - 1) + step * (chromaWidth - 1) + 1
                               : 0,
                       2);
    const bool isInterleaved = step == 2 && fields[4] & 4;
    Bytes both(isInterleaved ? chroma.size() + 1 : 0, 3);
    const YCbCrFrame frame { y.data(),
                             isInterleaved ? both.data() : chroma.data(),
                             isInterleaved ? both.data() + 1 : chroma.data(),
                             std::uint16_t(yStride),
                             std::uint16_t(cStride),
                             std::uint16_t(step),
                             std::uint16_t(width),
                             std::uint16_t(height),
                             fields[4] };
    m_codecs.latest->tell(
            [&](VideoDecoderListener *listener) { listener->onDecodedYCbCrFrame(&frame); });
}

} // namespace

// The library's managers; only a provider without managers of its own would ask for them.
Veltra::Ocelle::CameraManager *OcelleManager()
{
    return nullptr;
}

Veltra::Ocelle::CodecManager *OcelleCodecManager()
{
    return nullptr;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static Application *const application = [] {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        return new Application;
    }();
    application->run(Bytes(data, data + size));
    return 0;
}
