// SPDX-License-Identifier: BSD-3-Clause
#include "transcodecommand.h"

#include "backendplugin.h"
#include "console.h"
#include "croppedvideobuffer.h"
#include "interruption.h"
#include "recordcommand.h"

#include <QCoreApplication>
#include <QVideoSurfaceFormat>

namespace Tool {
namespace {

constexpr int TickInterval = 1000; // ms
constexpr int ProgressTicks = 10;  // between two lines where they do not replace each other
constexpr int MostEncoding = 8;    // pictures in the encoder, whose queue takes 20
constexpr int MostUnderway = 28;   // pictures in both services and in between

} // namespace

TranscodeCommand::TranscodeCommand(const EncodeOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
{
    m_report.source = options.input;
    connect(&m_surface, &RecordSurface::pictureTaken, this, &TranscodeCommand::onPicture);
    connect(&m_player, &FilePlayer::noticed, this, printNote);
    connect(&m_player, &FilePlayer::failed, this, &TranscodeCommand::fail);
    connect(&m_player, &FilePlayer::ended, this, &TranscodeCommand::onDecoded);
    connect(&m_tick, &QTimer::timeout, this, &TranscodeCommand::onTick);
    m_player.setCondition([this] {
        const int encoding = m_recording ? m_recording->waiting() : 0;
        return m_player.inside() + m_pictures.size() + encoding < MostUnderway;
    });
}

TranscodeCommand::~TranscodeCommand() = default;

int TranscodeCommand::run()
{
    if (!prepare())
        return m_exitCode;
    Interruption interruption;
    connect(&interruption, &Interruption::interrupted, this, &TranscodeCommand::stop);
    QTimer::singleShot(0, this, [this] { m_player.start(); }); // in the event loop
    m_tick.start(TickInterval);
    m_time.start();
    QCoreApplication::exec();
    m_tick.stop();
    endProgress();
    return close();
}

/*! What can be known before anything is written. */
bool TranscodeCommand::prepare()
{
    QString error;
    m_exitCode = Usage;
    const auto settings = recordingSettings(m_options.encoding, &error);
    if (settings && VideoFileWriter::replaces(settings->file, m_options.input))
        error = QStringLiteral("\"%1\" cannot be transcoded to itself").arg(m_options.input);
    bool isUsage = true;
    if (error.isEmpty() && m_player.open(m_options.input, std::nullopt, &error, &isUsage)) {
        m_report.settings = *settings;
        m_report.settings.rate = m_player.stream().properties().rate;
        m_report.settings.timeScale = m_player.stream().properties().timeScale;
        m_report.settings.rotation = turnToEncode(m_player.stream().properties().turn,
                                                  settings->rotation, settings->mirrored);
        isUsage = false;
        if (QMediaServiceProviderPlugin *const backend = backendPlugin(&error)) {
            m_recording = std::make_unique<Recording>(backend);
            error = m_recording->problem(settings->codec);
        }
    }
    m_exitCode = error.isEmpty() ? Success : isUsage ? Usage : Failure;
    if (!error.isEmpty())
        printError(error);
    else if (!m_player.stream().properties().turn.isExact)
        printNote(turnNote(m_options.input, m_player.stream().properties().turn));
    return error.isEmpty();
}

void TranscodeCommand::onPicture(const QVideoFrame &frame)
{
    m_player.onPicture(frame); // before its time changes, which belongs to all that share it
    QVideoFrame picture = cropped(frame, m_surface.surfaceFormat().viewport());
    if (!m_player.stream().hasTimes()) // they are in decoding order
        picture.setStartTime(qint64(double(m_taken) * 1e6 / m_report.settings.rate));
    ++m_taken;
    if (!m_isFinished) {
        m_pictures.enqueue(picture);
        // Not from within the surface, which the presenter waits for.
        QMetaObject::invokeMethod(this, &TranscodeCommand::encode, Qt::QueuedConnection);
    }
}

void TranscodeCommand::startRecording(QSize size)
{
    m_isRecording = true;
    m_report.settings.size = size;
    connect(m_recording.get(), &Recording::started, this, [this] {
        m_isReady = true;
        encode();
    });
    connect(m_recording.get(), &Recording::unitWritten, this, &TranscodeCommand::encode);
    connect(m_recording.get(), &Recording::failed, this, &TranscodeCommand::fail);
    connect(
            m_recording.get(), &Recording::ended, this, [] { QCoreApplication::exit(); },
            Qt::QueuedConnection);
    QString error;
    if (!m_recording->start(m_report.settings, &error))
        fail(error);
}

/*! Keeps the encoder busy and its queue short: what it has no room for would be refused. */
void TranscodeCommand::encode()
{
    if (!m_isRecording && !m_isFinished && !m_pictures.isEmpty())
        startRecording(m_pictures.head().size());
    while (m_isReady && !m_isFinished && !m_pictures.isEmpty() &&
           m_recording->waiting() < MostEncoding) {
        const QVideoFrame &picture = m_pictures.head();
        const QSize size = m_report.settings.size;
        if (picture.size() != size) {
            fail(sizeChange(m_options.input, size, picture.size()));
            return;
        }
        if (!m_recording->encode(picture))
            break; // goes with the next unit
        m_pictures.dequeue();
    }
    m_player.feed();
    endIfDone();
}

void TranscodeCommand::onDecoded()
{
    m_isDecoded = true;
    if (m_taken == 0 && m_exitCode == Success)
        fail(QStringLiteral("%1: no picture came out of it").arg(m_options.input));
    encode();
}

/*! When all that was decoded has gone to the encoder, that ends when it is in the file. */
void TranscodeCommand::endIfDone()
{
    if (!m_isDecoded || (!m_isFinished && !m_pictures.isEmpty()))
        return;
    m_isFinished = true;
    m_recording->end();
    if (!m_isRecording)
        QCoreApplication::exit();
}

void TranscodeCommand::onTick()
{
    ++m_ticks;
    if (!progressIsLive() && m_ticks % ProgressTicks != 0)
        return;
    m_report.written = m_recording->written();
    QString text = progressText(m_report.seconds(), m_report.written.units, m_report.bitRate(), 0);
    const qint64 all = m_player.stream().properties().duration;
    if (all > 0)
        text += QStringLiteral(", %1 %").arg(
                qMin<qint64>(100, 100 * m_report.written.duration / all));
    printProgress(text);
}

/*! What is encoded already is kept. */
void TranscodeCommand::fail(const QString &error)
{
    printError(error);
    m_exitCode = Failure;
    m_isFinished = true;
    m_pictures.clear();
    stop();
}

/*! Discards what is in the decoder; the rest goes its way. */
void TranscodeCommand::stop()
{
    if (m_isDecoded)
        endIfDone();
    else
        m_player.stop();
}

/*! Completes the file, also after a failure: what was encoded so far is good. */
int TranscodeCommand::close()
{
    m_report.written = m_recording->written();
    m_report.dropped =
            m_player.isComplete()
                    ? qMax<qint64>(0, m_player.counts().expected() - m_report.written.units)
                    : m_taken - m_report.written.units;
    m_report.speed =
            double(m_report.written.units) * 1000 / double(qMax<qint64>(1, m_time.elapsed()));
    if (!m_isRecording)
        return m_exitCode == Success ? int(Failure) : m_exitCode;
    QString error;
    m_report.isComplete = m_recording->close(&error);
    if (!m_report.isComplete && m_exitCode == Success) {
        m_exitCode = Failure;
        printError(error);
    }
    if (m_player.hasTrouble() || m_report.dropped > 0)
        m_exitCode = Failure;
    if (m_report.written.units == 0)
        return m_exitCode;
    const bool isPrinted =
            m_options.json ? printJson(QJsonDocument(toJson(m_report)), QJsonDocument::Compact)
                           : printLine(toText(m_report));
    return isPrinted ? m_exitCode : int(Failure);
}

} // namespace Tool
