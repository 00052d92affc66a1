// SPDX-License-Identifier: BSD-3-Clause
#include "recordcommand.h"

#include "backendplugin.h"
#include "cameralist.h"
#include "console.h"
#include "interruption.h"
#include "settingschoice.h"
#include "standinfunctions.h"

#include <QCoreApplication>
#include <QMediaService>

#include <palaver/qpvrawvideosourcecontrol.h>

namespace Tool {
namespace {

constexpr int TickInterval = 1000; // ms
constexpr int MaxIdleTicks = 10;   // without a picture
constexpr int ProgressTicks = 10;  // between two lines where they do not replace each other

} // namespace

std::optional<RecordingSettings> recordingSettings(const EncodingOptions &options, QString *error)
{
    const auto container = containerOf(options.output);
    if (!container) {
        *error = QStringLiteral("\"%1\" ends in none of %2")
                         .arg(options.output, containerSuffixes());
        return std::nullopt;
    }
    const auto codec = chooseCodec(*container, options.codec, error);
    if (!codec)
        return std::nullopt;
    *error = VideoFileWriter::problem(options.output, options.force);
    if (!error->isEmpty())
        return std::nullopt;
    RecordingSettings settings;
    settings.file = options.output;
    settings.replace = options.force;
    settings.codec = *codec;
    settings.bitRate = options.bitRate;
    settings.rotation = options.rotation;
    settings.mirrored = options.mirror;
    return settings;
}

QString sizeChange(const QString &file, QSize before, QSize after)
{
    return QStringLiteral("%1: the pictures change from %2x%3 to %4x%5, which one file cannot hold")
            .arg(file, QString::number(before.width()), QString::number(before.height()),
                 QString::number(after.width()), QString::number(after.height()));
}

RecordCommand::RecordCommand(const RecordOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
{
    m_report.source = options.camera;
    connect(&m_surface, &RecordSurface::pictureTaken, this, &RecordCommand::onPicture);
    connect(&m_tick, &QTimer::timeout, this, &RecordCommand::onTick);
}

RecordCommand::~RecordCommand()
{
    closeCamera();
}

int RecordCommand::run()
{
    if (!prepare())
        return Usage;
    Interruption interruption;
    connect(&interruption, &Interruption::interrupted, this, [this] { finish(Success); });
    // In the event loop, which finish() ends.
    QTimer::singleShot(0, this, &RecordCommand::openCamera);
    m_tick.start(TickInterval);
    QCoreApplication::exec();
    endProgress();
    return close();
}

/*! What can be known before anything is opened. */
bool RecordCommand::prepare()
{
    QString error;
    const auto settings = recordingSettings(m_options.encoding, &error);
    if (settings && m_options.check && (settings->rotation != 0 || settings->mirrored)) {
        error = QStringLiteral("--check does not compare pictures that are turned or mirrored");
    } else if (settings) {
        m_report.settings = *settings;
        m_info = findCamera(m_options.camera);
        if (m_info.isNull())
            error = noSuchCamera(m_options.camera);
    }
    if (error.isEmpty()) {
        if (QMediaServiceProviderPlugin *const backend = backendPlugin(&error)) {
            m_recording = std::make_unique<Recording>(backend);
            error = m_recording->problem(settings->codec);
            if (error.isEmpty() && m_options.check) {
                m_check = std::make_unique<LiveCheck>(backend);
                error = m_check->problem(settings->codec);
            }
        }
    }
    if (!error.isEmpty())
        printError(error);
    return error.isEmpty();
}

void RecordCommand::openCamera()
{
    connect(m_recording.get(), &Recording::started, this, &RecordCommand::startCamera);
    connect(m_recording.get(), &Recording::failed, this,
            [this](const QString &error) { finish(Failure, error); });
    if (m_check) {
        connect(m_recording.get(), &Recording::unitEncoded, m_check.get(), &LiveCheck::addUnit);
        connect(m_recording.get(), &Recording::ended, m_check.get(), &LiveCheck::finish,
                Qt::QueuedConnection);
        connect(m_check.get(), &LiveCheck::failed, this,
                [this](const QString &error) { finish(Failure, error); });
    }
    const auto exit = [] { QCoreApplication::exit(); };
    if (m_check)
        connect(m_check.get(), &LiveCheck::ended, this, exit, Qt::QueuedConnection);
    else
        connect(m_recording.get(), &Recording::ended, this, exit, Qt::QueuedConnection);
    m_camera = std::make_unique<QCamera>(m_info);
    connect(m_camera.get(), &QCamera::statusChanged, this, &RecordCommand::onCameraStatusChanged);
    connect(m_camera.get(), &QCamera::errorOccurred, this, &RecordCommand::onCameraError);
    if (m_check)
        m_camera->setViewfinder(m_check->preview());
    m_camera->load();
    onCameraStatusChanged(m_camera->status());
}

void RecordCommand::onCameraStatusChanged(QCamera::Status status)
{
    if (status == QCamera::LoadedStatus && !m_isLoaded && !m_isFinished) {
        m_isLoaded = true;
        // Not from within the camera's own signal.
        QTimer::singleShot(0, this, &RecordCommand::startRecording);
    }
}

void RecordCommand::startRecording()
{
    if (m_isFinished)
        return;
    QString error;
    const QList<QCameraViewfinderSettings> offered = m_camera->supportedViewfinderSettings();
    const auto chosen = chooseSettings(offered, m_options.size, m_options.rate, &error);
    if (!chosen) {
        finish(offered.isEmpty() ? Failure : Usage,
               QStringLiteral("camera %1: %2").arg(m_options.camera, error));
        return;
    }
    m_pictures = m_camera->service()->requestControl<QPVRawVideoSourceControl *>();
    if (!m_pictures) {
        finish(Failure, QStringLiteral("camera %1 offers no raw pictures").arg(m_options.camera));
        return;
    }
    m_camera->setViewfinderSettings(*chosen);
    m_pictures->setSurface(&m_surface);
    m_report.settings.size = chosen->resolution();
    m_report.settings.rate = chosen->maximumFrameRate();
    if ((m_check && !m_check->start(m_report.settings.codec, m_report.settings.size, &error)) ||
        !m_recording->start(m_report.settings, &error))
        finish(Failure, error);
}

void RecordCommand::startCamera()
{
    if (!m_isFinished)
        m_camera->start();
}

void RecordCommand::onPicture(const QVideoFrame &frame)
{
    if (m_isFinished)
        return;
    if (m_taken == 0) {
        m_firstTime = frame.startTime();
        if (!m_options.seconds)
            printNote(QStringLiteral("Pictures of %1 come in; Ctrl-C ends this.")
                              .arg(m_options.camera));
    }
    const double seconds = double(frame.startTime() - m_firstTime) / 1e6;
    // The nearest picture ends it: their times are rounded.
    if (m_options.seconds && m_taken > 0 &&
        seconds > *m_options.seconds - 0.5 / m_report.settings.rate) {
        finish(Success);
        return;
    }
    ++m_taken;
    if (m_recording->encode(frame) && m_check) // counts what it does not take
        m_check->addCameraPicture(frame);
}

void RecordCommand::onCameraError(QCamera::Error error)
{
    if (error == QCamera::NoError)
        return;
    // Where the camera has gone, another one took its place, and the trouble may be that one's.
    finish(Failure, findCamera(m_options.camera).isNull()
                            ? gone()
                            : QStringLiteral("camera %1: %2")
                                      .arg(m_options.camera, m_camera->errorString()));
}

void RecordCommand::onTick()
{
    if (m_isFinished)
        return;
    if (findCamera(m_options.camera).isNull()) { // else another camera would take its place
        finish(Failure, gone());
        return;
    }
    m_idleTicks = m_taken == m_takenAtTick ? m_idleTicks + 1 : 0;
    m_takenAtTick = m_taken;
    if (m_idleTicks >= MaxIdleTicks) {
        finish(Failure,
               QStringLiteral("camera %1 has delivered no picture for %2 s")
                       .arg(m_options.camera, QString::number(MaxIdleTicks * TickInterval / 1000)));
        return;
    }
    ++m_ticks;
    const int interval = progressIsLive() ? 1 : ProgressTicks;
    if (m_ticks % interval == 0) {
        const FileSink::Written written = m_recording->written();
        const double bits = 8 * double(written.bytes - m_bytesAtTick);
        m_bytesAtTick = written.bytes;
        printProgress(progressText(double(written.duration) / 1e6, written.units,
                                   bits / (interval * TickInterval / 1000.0), dropped()));
    }
}

qint64 RecordCommand::dropped() const
{
    const auto counted = statisticsOf(&m_surface); // none for a camera of another back end
    return m_recording->refused() + (counted ? qint64(counted->dropped) : 0);
}

QString RecordCommand::gone() const
{
    return QStringLiteral("camera %1 has gone").arg(m_options.camera);
}

/*! The camera stops at once, the recording when all that was taken is in the file. */
void RecordCommand::finish(int exitCode, const QString &error)
{
    if (m_exitCode == Success)
        m_exitCode = exitCode;
    if (!error.isEmpty())
        printError(error);
    if (m_isFinished)
        return;
    m_isFinished = true;
    m_tick.stop();
    m_report.dropped = dropped();
    if (const auto counted = statisticsOf(&m_surface))
        m_report.missing = qint64(counted->missing);
    // Not from within a signal of the camera or the surface.
    QTimer::singleShot(0, this, [this] {
        closeCamera();
        m_recording->end();
    });
}

void RecordCommand::closeCamera()
{
    if (!m_camera)
        return;
    m_camera->disconnect(this);
    if (m_pictures) {
        m_pictures->setSurface(nullptr);
        m_camera->service()->releaseControl(m_pictures);
        m_pictures = nullptr;
    }
    m_camera.reset();
}

/*! Completes the file, also after a failure: what was recorded so far is good. */
int RecordCommand::close()
{
    m_report.written = m_recording->written();
    QString error;
    m_report.isComplete = m_recording->close(&error);
    if (!m_report.isComplete && m_exitCode == Success) {
        m_exitCode = Failure;
        printError(error);
    }
    if (m_report.written.units == 0)
        return m_exitCode;
    const bool isGood = isChecked();
    return printReport() && isGood ? m_exitCode : int(Failure);
}

bool RecordCommand::printReport()
{
    if (!m_options.json)
        return printLine(toText(m_report)) && (!m_check || printLine(toText(m_check->result())));
    QJsonObject json = toJson(m_report);
    if (m_check)
        json.insert(QStringLiteral("check"), toJson(m_check->result()));
    return printJson(QJsonDocument(json), QJsonDocument::Compact);
}

/*! Whether all that was recorded was decoded, and the pictures that were asked for are saved. */
bool RecordCommand::isChecked()
{
    if (!m_check)
        return true;
    QString error;
    if (!m_options.pictures.isEmpty() && !m_check->savePictures(m_options.pictures, &error))
        printError(error);
    return error.isEmpty() && m_check->result().lost == 0;
}

} // namespace Tool
