// SPDX-License-Identifier: BSD-3-Clause
// Encodes the pictures of a folder, in the order of their names, to one video: an IVF file (VP8) or
// a bare stream of H.264 (.264) or H.265 (.265).
#include "codecservice.h"
#include "ivf.h"
#include "numberoption.h"
#include "options.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QVideoEncoderSettingsControl>
#include <QVideoSurfaceFormat>

#include <palaver/qpvencodecontrol.h>

#include <cmath>

namespace {

constexpr int MostInside = 10; // pictures; the service's queue takes 20 and refuses more

class ImageEncoder : public QObject
{
    Q_OBJECT
public:
    ImageEncoder(const QStringList &images, const QString &output, double rate)
        : m_images(images)
        , m_rate(rate)
        , m_isIvf(output.endsWith(QLatin1String(".ivf")))
        , m_mimeType(QLatin1String(m_isIvf                                  ? "video/vp8"
                                   : output.endsWith(QLatin1String(".265")) ? "video/h265"
                                                                            : "video/h264"))
        , m_file(output)
    {
    }

    void start()
    {
        m_control = m_service.control<QPVEncodeControl *>();
        auto *const settings = m_service.control<QVideoEncoderSettingsControl *>();
        if (!m_control || !settings)
            return fail(m_service.error());
        if (!m_control->supportedCodecs(false).contains(m_mimeType))
            return fail(
                    QStringLiteral("there is no encoder for %1 on this machine").arg(m_mimeType));
        const QImage first(m_images.constFirst());
        if (first.isNull())
            return fail(QStringLiteral("%1 is no picture").arg(m_images.constFirst()));
        m_size = first.size();
        if (!m_file.open(QIODevice::WriteOnly))
            return fail(QStringLiteral("%1: %2").arg(m_file.fileName(), m_file.errorString()));
        if (m_isIvf && !Ivf::write(&m_file, Ivf::Header { "VP80", m_size }))
            return fail(m_file.errorString());

        // Units come on a thread of the library; queued, they come to this one.
        connect(m_control, &QPVEncodeControl::encodedVideoFrame, this, &ImageEncoder::write,
                Qt::QueuedConnection);
        connect(
                m_control, &QPVEncodeControl::error, this,
                [this](QPVEncoder::Error, const QString &error) { fail(error); },
                Qt::QueuedConnection);
        // Pictures are welcome once the encoder is there.
        connect(
                m_control, &QPVEncodeControl::statusChanged, this,
                [this](QPVEncoder::Status status) {
                    if (status == QPVEncoder::StartingStatus)
                        feed();
                },
                Qt::QueuedConnection);
        QVideoEncoderSettings wanted;
        wanted.setCodec(m_mimeType);
        wanted.setBitRate(2000000); // bits per second
        wanted.setEncodingMode(QMultimedia::ConstantBitRateEncoding);
        settings->setVideoSettings(wanted);
        QVideoSurfaceFormat format(m_size, QVideoFrame::Format_RGB32);
        format.setFrameRate(m_rate);
        if (!m_control->start(format))
            fail(QStringLiteral("the encoder does not start"));
    }

private:
    void feed()
    {
        while (!m_hasEnded && m_next < m_images.size() && m_next - m_written < MostInside) {
            const QString name = m_images.at(m_next);
            const QImage image(name);
            if (image.size() != m_size)
                return fail(QStringLiteral("%1 is no picture of %2x%3")
                                    .arg(name)
                                    .arg(m_size.width())
                                    .arg(m_size.height()));
            QVideoFrame frame(image.convertToFormat(QImage::Format_RGB32));
            frame.setStartTime(qint64(m_next * 1000000 / m_rate)); // microseconds
            if (!m_control->encode(frame))
                return fail(QStringLiteral("the encoder refused %1").arg(name));
            ++m_next;
        }
    }

    void write(const QPVEncodedVideoFrame &unit)
    {
        if (m_hasEnded)
            return;
        const QByteArray data = unit.data();
        const bool isWritten =
                m_isIvf ? Ivf::write(&m_file, Ivf::Unit { data, unit.meta().timestamp })
                        : m_file.write(data) == data.size();
        if (!isWritten || !m_file.flush())
            return fail(QStringLiteral("%1: %2").arg(m_file.fileName(), m_file.errorString()));
        ++m_written;
        if (m_written < m_images.size())
            return feed();
        // Not before the last unit has come: stop() discards what is still inside.
        m_hasEnded = true;
        m_control->stop();
        qInfo("%d pictures, %lld bytes", m_written, m_file.size());
        QCoreApplication::quit();
    }

    void fail(const QString &error)
    {
        if (m_hasEnded)
            return;
        m_hasEnded = true;
        qCritical("%s", qPrintable(error));
        QCoreApplication::exit(1);
    }

    const QStringList m_images;
    const double m_rate; // pictures per second
    const bool m_isIvf;
    const QString m_mimeType;
    QFile m_file;
    QSize m_size;
    int m_next = 0;    // picture to encode
    int m_written = 0; // units
    bool m_hasEnded = false;
    CodecService m_service { QStringLiteral("veltra.palaver.encoder") };
    QPVEncodeControl *m_control = nullptr; // the service's
};

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QCommandLineParser options;
    options.addOption({ "frames", "Encode no more than N pictures.", "N" });
    options.addOption({ "rate", "Pictures per second.", "N", "30" });
    options.addPositionalArgument("FOLDER", "Folder of PNG or JPEG pictures of one size.");
    options.addPositionalArgument("OUT", "File to write: .ivf, .264 or .265; replaced.");
    readOptions(&options, 2);

    const QString output = options.positionalArguments().at(1);
    if (!output.endsWith(".ivf") && !output.endsWith(".264") && !output.endsWith(".265")) {
        qCritical("%s ends in none of .ivf, .264 and .265", qPrintable(output));
        return 2;
    }
    const QDir folder(options.positionalArguments().at(0));
    QStringList images;
    const QStringList names =
            folder.entryList({ "*.png", "*.jpg", "*.jpeg" }, QDir::Files, QDir::Name);
    for (const QString &name : names)
        images.append(folder.filePath(name));
    if (options.isSet("frames"))
        images = images.mid(0, numberOption(options, "frames"));
    if (images.isEmpty()) {
        qCritical("there are no pictures in %s", qPrintable(folder.path()));
        return 2;
    }
    bool isNumber = false;
    const double rate = options.value("rate").toDouble(&isNumber);
    if (!isNumber || !std::isfinite(rate) || rate <= 0) {
        qCritical("--rate takes pictures per second, not \"%s\"",
                  qPrintable(options.value("rate")));
        return 2;
    }
    ImageEncoder encoder(images, output, rate);
    QMetaObject::invokeMethod(&encoder, &ImageEncoder::start, Qt::QueuedConnection);
    return application.exec();
}

#include "main.moc"
