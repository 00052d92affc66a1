// SPDX-License-Identifier: BSD-3-Clause
#include "previewcommand.h"

#include "cameralist.h"
#include "console.h"
#include "environment.h"
#include "frameimage.h"
#include "interruption.h"
#include "settingschoice.h"
#include "standinfunctions.h"

#include <QCoreApplication>

namespace Tool {
namespace {

constexpr int TickInterval = 1000; // ms
constexpr int MaxIdleTicks = 10;   // without a picture
constexpr int ProgressTicks = 10;  // between two lines where they do not replace each other

std::optional<PreviewReport::Device> deviceOf(const QString &camera)
{
    const auto rate = rateOf(camera.toStdString());
    if (!rate)
        return std::nullopt;
    return PreviewReport::Device { QString::fromStdString(rate->format), rate->negotiated,
                                   rate->measured, QString::fromStdString(rate->loweringControl) };
}

std::optional<PreviewReport::Delivery> deliveryTo(const QAbstractVideoSurface *surface)
{
    const auto counted = statisticsOf(surface);
    if (!counted)
        return std::nullopt; // a camera of another back end, or of a device's platform
    return PreviewReport::Delivery { counted->delivered, counted->dropped, counted->missing,
                                     counted->duplicated };
}

} // namespace

PreviewCommand::PreviewCommand(const PreviewOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
{
    m_report.camera = options.camera;
    if (options.frames)
        m_surface.setLimit(*options.frames);
    connect(&m_surface, &PreviewSurface::limitReached, this, [this] { finish(Success); });
    connect(&m_surface, &PreviewSurface::firstPictureTaken, this, [this] {
        if (m_options.window && !hasDisplay())
            printNote(QStringLiteral("There is no display, so the preview runs without a window."));
        if (!m_options.frames)
            printNote(QStringLiteral("Pictures of %1 come in; Ctrl-C ends this.")
                              .arg(m_options.camera));
    });
    connect(&m_tick, &QTimer::timeout, this, &PreviewCommand::onTick);
}

PreviewCommand::~PreviewCommand() = default;

int PreviewCommand::run()
{
    const QCameraInfo camera = findCamera(m_options.camera);
    if (camera.isNull()) {
        printError(noSuchCamera(m_options.camera));
        return Usage;
    }
    Interruption interruption;
    connect(&interruption, &Interruption::interrupted, this, [this] { finish(Success); });
    // In the event loop, which finish() ends.
    QTimer::singleShot(0, this, [this, camera] { openCamera(camera); });
    m_tick.start(TickInterval);
    int exitCode = QCoreApplication::exec();

    closeCamera();
    endProgress();
    if (m_started && exitCode != Usage) {
        if (!saveSnapshot())
            exitCode = Failure;
        if (!printReport())
            exitCode = Failure;
    }
    return exitCode;
}

void PreviewCommand::openCamera(const QCameraInfo &camera)
{
    m_camera = std::make_unique<QCamera>(camera);
    connect(m_camera.get(), &QCamera::statusChanged, this, &PreviewCommand::onStatusChanged);
    connect(m_camera.get(), &QCamera::errorOccurred, this, &PreviewCommand::onError);
    m_camera->setViewfinder(&m_surface);
    m_camera->load();
    onStatusChanged(m_camera->status());
}

void PreviewCommand::onStatusChanged(QCamera::Status status)
{
    if (status == QCamera::LoadedStatus && !m_started && !m_finished) {
        m_started = true;
        // Not from within the camera's own signal.
        QTimer::singleShot(0, this, &PreviewCommand::startCamera);
    }
}

void PreviewCommand::startCamera()
{
    QString error;
    const QList<QCameraViewfinderSettings> offered = m_camera->supportedViewfinderSettings();
    const auto settings = chooseSettings(offered, m_options.size, m_options.rate, &error);
    if (!settings) {
        finish(offered.isEmpty() ? Failure : Usage,
               QStringLiteral("camera %1: %2").arg(m_options.camera, error));
        return;
    }
    m_report.settings = *settings;
    m_camera->setViewfinderSettings(*settings);
    if (m_options.window && hasDisplay())
        openWindow();
    m_camera->start();
}

void PreviewCommand::openWindow()
{
    const QSize size = m_report.settings.resolution();
    m_window = std::make_unique<PreviewWindow>(&m_surface);
    m_window->setTitle(QStringLiteral("%1, %2x%3 at %4 fps")
                               .arg(m_options.camera, QString::number(size.width()),
                                    QString::number(size.height()),
                                    QString::number(m_report.settings.maximumFrameRate())));
    connect(m_window.get(), &PreviewWindow::closed, this, [this] { finish(Success); });
    connect(&m_surface, &PreviewSurface::pictureTaken, m_window.get(),
            [this] { m_window->update(); });
    m_window->open(size);
}

void PreviewCommand::onError(QCamera::Error error)
{
    if (error == QCamera::NoError)
        return;
    // Where the camera has gone, another one took its place, and the trouble may be that one's.
    finish(Failure, findCamera(m_options.camera).isNull()
                            ? gone()
                            : QStringLiteral("camera %1: %2")
                                      .arg(m_options.camera, m_camera->errorString()));
}

void PreviewCommand::onTick()
{
    if (findCamera(m_options.camera).isNull()) { // else another camera would take its place
        finish(Failure, gone());
        return;
    }
    const qint64 presented = m_surface.presented();
    m_idleTicks = presented == m_presentedAtTick ? m_idleTicks + 1 : 0;
    m_presentedAtTick = presented;
    if (m_idleTicks >= MaxIdleTicks) {
        finish(Failure,
               QStringLiteral("camera %1 has delivered no picture for %2 s")
                       .arg(m_options.camera, QString::number(MaxIdleTicks * TickInterval / 1000)));
        return;
    }
    ++m_ticks;
    if (progressIsLive() || m_ticks % ProgressTicks == 0) {
        const QString all =
                m_options.frames ? QStringLiteral(" of %1").arg(*m_options.frames) : QString();
        printProgress(QStringLiteral("%1 s: %2%3 pictures, %4 pictures/s")
                              .arg(m_ticks * TickInterval / 1000)
                              .arg(presented)
                              .arg(all)
                              .arg(m_surface.rate(), 0, 'f', 2));
    }
}

QString PreviewCommand::gone() const
{
    return QStringLiteral("camera %1 has gone").arg(m_options.camera);
}

void PreviewCommand::finish(int exitCode, const QString &error)
{
    if (m_finished)
        return;
    m_finished = true;
    m_report.delivery = deliveryTo(&m_surface);
    m_surface.setLimit(m_surface.presented()); // what comes now is not in those figures
    m_report.device = deviceOf(m_options.camera);
    m_tick.stop();
    if (!error.isEmpty())
        printError(error);
    QCoreApplication::exit(exitCode);
}

void PreviewCommand::closeCamera()
{
    m_window.reset();
    if (m_camera)
        m_camera->disconnect(this);
    m_camera.reset();
}

bool PreviewCommand::saveSnapshot()
{
    if (m_options.snapshot.isEmpty())
        return true;
    QString error = QStringLiteral("there is no picture");
    if (m_surface.frame().isValid()) {
        if (saveImage(toImage(m_surface.frame(), m_surface.isMirrored()), m_options.snapshot,
                      &error)) {
            m_report.snapshot = m_options.snapshot;
            return true;
        }
    }
    printError(QStringLiteral("the snapshot %1 was not saved: %2").arg(m_options.snapshot, error));
    return false;
}

bool PreviewCommand::printReport()
{
    const QVideoFrame frame = m_surface.frame();
    m_report.size = frame.isValid() ? frame.size() : m_report.settings.resolution();
    m_report.format =
            formatName(frame.isValid() ? frame.pixelFormat() : m_report.settings.pixelFormat());
    m_report.mirrored = m_surface.isMirrored();
    m_report.presented = m_surface.presented();
    m_report.rate = m_surface.rate();
    m_report.latencies = m_surface.latencies();
    return m_options.json ? printJson(QJsonDocument(toJson(m_report)), QJsonDocument::Compact)
                          : printLine(toText(m_report));
}

} // namespace Tool
