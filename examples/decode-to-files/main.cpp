// SPDX-License-Identifier: BSD-3-Clause
// Decodes an IVF file of VP8 or VP9 and saves its pictures as 0001.png, 0002.png and so on.
#include "codecservice.h"
#include "ivf.h"
#include "numberoption.h"
#include "options.h"

#include <QAbstractVideoSurface>
#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QVideoRendererControl>

#include <palaver/qpvdecodecontrol.h>

namespace {

constexpr int MostInside = 20; // units; the service's queue takes no more

/*! Where the decoder's pictures come, one by one and in order, on this object's thread. */
class Surface : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override
    {
        if (type != QAbstractVideoBuffer::NoHandle)
            return {};
        return { QVideoFrame::Format_NV12, QVideoFrame::Format_YUV420P };
    }
    bool present(const QVideoFrame &frame) override
    {
        emit pictureCame(frame);
        return true;
    }

signals:
    void pictureCame(const QVideoFrame &frame);
};

class FileDecoder : public QObject
{
    Q_OBJECT
public:
    FileDecoder(const QString &input, const QDir &folder, int most)
        : m_file(input)
        , m_folder(folder)
        , m_most(most)
    {
    }
    ~FileDecoder() override
    {
        if (m_renderer)
            m_renderer->setSurface(nullptr); // before the surface goes
    }

    void start()
    {
        m_control = m_service.control<QPVDecodeControl *>();
        m_renderer = m_service.control<QVideoRendererControl *>();
        if (!m_control || !m_renderer)
            return fail(m_service.error());
        Ivf::Header header;
        if (!m_file.open(QIODevice::ReadOnly) || !Ivf::read(&m_file, &header))
            return fail(
                    QStringLiteral("%1 is no IVF file that can be read").arg(m_file.fileName()));
        if (header.codec != "VP80" && header.codec != "VP90")
            return fail(QStringLiteral("%1 has \"%2\" in it, neither VP8 nor VP9")
                                .arg(m_file.fileName(),
                                     QString::fromLatin1(header.codec.toPercentEncoding())));
        QVideoEncoderSettings stream;
        stream.setCodec(QLatin1String(header.codec == "VP90" ? "video/vp9" : "video/vp8"));
        stream.setResolution(header.size);
        if (!m_control->supportedCodecs(false).contains(stream.codec()))
            return fail(QStringLiteral("there is no decoder for %1 here").arg(stream.codec()));

        connect(&m_surface, &Surface::pictureCame, this, &FileDecoder::save);
        connect(
                m_control, &QPVDecodeControl::error, this,
                [this](QPVDecoder::Error, const QString &error) { fail(error); },
                Qt::QueuedConnection);
        connect(m_control, &QPVDecodeControl::statusChanged, this, &FileDecoder::onStatus,
                Qt::QueuedConnection);
        m_renderer->setSurface(&m_surface);
        if (!m_control->start(stream))
            fail(QStringLiteral("the decoder does not start"));
    }

private:
    void onStatus(QPVDecoder::Status status)
    {
        if (status == QPVDecoder::StartingStatus)
            feed();
        if (status == QPVDecoder::UnloadedStatus && m_isDraining && !m_hasFailed) {
            if (m_saved < m_handed)
                return fail(QStringLiteral("%1 pictures did not come").arg(m_handed - m_saved));
            qInfo("%d pictures", m_saved);
            QCoreApplication::quit();
        }
    }

    void feed()
    {
        while (!m_hasFailed && !m_isDraining && m_handed - m_saved < MostInside) {
            Ivf::Unit unit;
            if (!Ivf::read(&m_file, &unit))
                return fail(QStringLiteral("%1 is cut off").arg(m_file.fileName()));
            if (unit.data.isEmpty() || m_handed == m_most) {
                m_isDraining = true;
                m_control->drain(); // what is inside still comes out, then it unloads
                return;
            }
            // Whether a unit is a key frame is up to the decoder to see.
            const QPVEncodedVideoFrame frame(unit.data.constData(), unsigned(unit.data.size()),
                                             { QPVEncodedVideoFrame::DeltaFrame, unit.time });
            if (!m_control->decode(frame))
                return fail(QStringLiteral("the decoder refused a unit"));
            ++m_handed;
        }
    }

    void save(const QVideoFrame &frame)
    {
        if (m_hasFailed)
            return; // pictures that were inside then
        const QString name = QStringLiteral("%1.png").arg(m_saved + 1, 4, 10, QLatin1Char('0'));
        if (!frame.image().save(m_folder.filePath(name)))
            return fail(QStringLiteral("%1 cannot be written").arg(m_folder.filePath(name)));
        ++m_saved;
        // Not from within present(): the decoder is left alone until it has returned.
        QMetaObject::invokeMethod(this, &FileDecoder::feed, Qt::QueuedConnection);
    }

    void fail(const QString &error)
    {
        if (m_hasFailed)
            return;
        m_hasFailed = true;
        qCritical("%s", qPrintable(error));
        QCoreApplication::exit(1);
    }

    QFile m_file;
    const QDir m_folder;
    const int m_most; // pictures
    int m_handed = 0; // units
    int m_saved = 0;  // pictures
    bool m_isDraining = false;
    bool m_hasFailed = false;
    Surface m_surface; // before the service, which presents to it
    CodecService m_service { QStringLiteral("veltra.palaver.decoder") };
    QPVDecodeControl *m_control = nullptr; // both are the service's
    QVideoRendererControl *m_renderer = nullptr;
};

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QCommandLineParser options;
    options.addOption({ "frames", "Decode no more than N pictures.", "N", "9999" });
    options.addPositionalArgument("FILE", "IVF file of VP8 or VP9.");
    options.addPositionalArgument("FOLDER", "Where the pictures go; has to be there.");
    readOptions(&options, 2);
    const QDir folder(options.positionalArguments().at(1));
    if (!folder.exists()) {
        qCritical("there is no folder %s", qPrintable(folder.path()));
        return 2;
    }
    FileDecoder decoder(options.positionalArguments().at(0), folder,
                        numberOption(options, "frames"));
    QMetaObject::invokeMethod(&decoder, &FileDecoder::start, Qt::QueuedConnection);
    return application.exec();
}

#include "main.moc"
