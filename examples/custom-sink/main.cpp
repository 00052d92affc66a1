// SPDX-License-Identifier: BSD-3-Clause
// Has a camera's pictures encoded and takes the result with a sink of its own, which here writes a
// bare H.264 stream to a file; it could as well send it somewhere.
#include "codecservice.h"
#include "numberoption.h"
#include "options.h"

#include <QAbstractVideoSurface>
#include <QCamera>
#include <QCameraInfo>
#include <QCommandLineParser>
#include <QFile>
#include <QGuiApplication>
#include <QMediaService>
#include <QVideoEncoderSettingsControl>

#include <palaver/qpvencodecontrol.h>
#include <palaver/qpvencodedvideosink.h>
#include <palaver/qpvencodedvideosourcecontrol.h>
#include <palaver/qpvrawvideosourcecontrol.h>

#include <atomic>

namespace {

/*!
 * The sink. present() is called on a thread of the camera library, the rest on the application
 * thread, and never two at a time: so the file needs no lock, but what others read meanwhile does.
 */
class StreamSink : public QObject, public QPVEncodedVideoSink
{
    Q_OBJECT
public:
    explicit StreamSink(const QString &file)
        : m_file(file)
    {
    }

    int units() const { return m_units; } // any thread
    qint64 bytes() const { return m_bytes; }
    QString error() const // once it has stopped; empty: the file is complete
    {
        return m_file.error() == QFileDevice::NoError
                       ? QString()
                       : m_file.fileName() + ": " + m_file.errorString();
    }

    bool isFormatSupported(const QVideoEncoderSettings &settings) override
    {
        return settings.codec() == QLatin1String("video/h264");
    }
    bool start(const QVideoEncoderSettings &) override // false: nothing gets encoded
    {
        if (m_file.open(QIODevice::WriteOnly))
            return true;
        emit failed(m_file.fileName() + ": " + m_file.errorString());
        return false;
    }
    void present(const QPVEncodedVideoFrame &frame) override
    {
        const QByteArray data = frame.data();
        // Flushed, so that a full disk is noticed at once.
        if (m_hasFailed || m_file.write(data) != data.size() || !m_file.flush()) {
            if (!m_hasFailed)
                emit failed(m_file.fileName() + ": " + m_file.errorString());
            m_hasFailed = true;
            return;
        }
        m_bytes += data.size();
        ++m_units;
        emit unitWritten();
    }
    void finish() override {}
    void stop() override { m_file.close(); } // may fail: see error()
    void release() override {} // another sink takes the place; this one is ours to delete

signals:
    void unitWritten(); // on the library's thread: connect queued
    void failed(const QString &error);

private:
    QFile m_file;
    bool m_hasFailed = false; // to write
    std::atomic<int> m_units { 0 };
    std::atomic<qint64> m_bytes { 0 };
};

/*! Takes the camera's pictures to the encoder. */
class Feed : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    QPVEncodeControl *encoder = nullptr;

    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override
    {
        if (type != QAbstractVideoBuffer::NoHandle)
            return {};
        return { QVideoFrame::Format_NV12, QVideoFrame::Format_YUV420P };
    }
    bool start(const QVideoSurfaceFormat &format) override
    {
        // Only now the size is known.
        return encoder->start(format) && QAbstractVideoSurface::start(format);
    }
    bool present(const QVideoFrame &frame) override
    {
        encoder->encode(frame); // refused while the encoder is not ready or does not keep up
        return true;
    }
};

QVideoEncoderSettings encoderSettings()
{
    QVideoEncoderSettings settings;
    settings.setCodec(QStringLiteral("video/h264"));
    settings.setBitRate(1000000); // bits per second
    settings.setEncodingMode(QMultimedia::ConstantBitRateEncoding);
    return settings;
}

/*! Ends the event loop once the sink has so many units, or after telling what went wrong. */
void endAfter(int units, const StreamSink &sink, QPVEncodeControl *encoder)
{
    QCoreApplication *const application = QCoreApplication::instance();
    const auto onError = [](const QString &error) {
        qCritical("%s", qPrintable(error));
        QCoreApplication::exit(1);
    };
    QObject::connect(
            encoder, &QPVEncodeControl::error, application,
            [=](QPVEncoder::Error, const QString &error) { onError(error); }, Qt::QueuedConnection);
    QObject::connect(&sink, &StreamSink::failed, application, onError, Qt::QueuedConnection);
    QObject::connect(
            &sink, &StreamSink::unitWritten, application,
            [units, &sink] {
                if (sink.units() >= units)
                    QCoreApplication::quit();
            },
            Qt::QueuedConnection);
}

[[noreturn]] void fail(const QString &error)
{
    qCritical("%s", qPrintable(error));
    std::exit(1);
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QCommandLineParser options;
    options.addOption({ "frames", "Number of pictures.", "N", "150" });
    options.addPositionalArgument("OUT.264", "File to write; replaced.");
    readOptions(&options, 1);
    const int frames = numberOption(options, "frames");

    if (QCameraInfo::availableCameras().isEmpty())
        fail("there is no camera; \"ocelle doctor\" tells why");
    StreamSink sink(options.positionalArguments().constFirst());
    Feed feed;
    CodecService service(QStringLiteral("veltra.palaver.encoder"));
    feed.encoder = service.control<QPVEncodeControl *>();
    auto *const settings = service.control<QVideoEncoderSettingsControl *>();
    auto *const source = service.control<QPVEncodedVideoSourceControl *>();
    if (!feed.encoder || !settings || !source)
        fail(service.error());

    settings->setVideoSettings(encoderSettings());
    source->addSink(&sink);

    QCamera camera;
    auto *const raw = camera.service()
                              ? camera.service()->requestControl<QPVRawVideoSourceControl *>()
                              : nullptr;
    if (!raw)
        fail("the camera is not one of Ocelle's; QT_MULTIMEDIA_PREFERRED_PLUGINS=ocelle prefers "
             "these");
    raw->setSurface(&feed); // a second surface, beside that of a viewfinder

    endAfter(frames, sink, feed.encoder);
    camera.start();
    const int result = application.exec();

    camera.stop();
    raw->setSurface(nullptr);
    feed.encoder->stop();      // ends with finish() and stop() of the sink
    source->removeSink(&sink); // it may be deleted now
    if (result != 0)
        return result; // why was told
    if (!sink.error().isEmpty())
        fail(sink.error());
    qInfo("%d pictures, %lld bytes", sink.units(), sink.bytes());
    return 0;
}

#include "main.moc"
