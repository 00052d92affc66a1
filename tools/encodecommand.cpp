// SPDX-License-Identifier: BSD-3-Clause
#include "encodecommand.h"

#include "backendplugin.h"
#include "console.h"
#include "interruption.h"
#include "recordcommand.h"

#include <QCoreApplication>

namespace Tool {
namespace {

constexpr int TickInterval = 1000; // ms
constexpr int ProgressTicks = 10;  // between two lines where they do not replace each other
constexpr int MostWaiting = 8;     // pictures in the encoder, whose queue takes 20

} // namespace

EncodeCommand::EncodeCommand(const EncodeOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
{
    m_report.source = options.input;
    connect(&m_tick, &QTimer::timeout, this, &EncodeCommand::onTick);
}

EncodeCommand::~EncodeCommand() = default;

int EncodeCommand::run()
{
    if (!prepare())
        return m_exitCode;
    Interruption interruption;
    connect(&interruption, &Interruption::interrupted, this, [this] { finish(Success); });
    QTimer::singleShot(0, this, &EncodeCommand::start); // in the event loop, which finish() ends
    m_tick.start(TickInterval);
    m_time.start();
    QCoreApplication::exec();
    endProgress();
    return close();
}

/*! What can be known before anything is written. */
bool EncodeCommand::prepare()
{
    QString error;
    m_exitCode = Usage;
    const auto settings = recordingSettings(m_options.encoding, &error);
    if (settings && VideoFileWriter::replaces(settings->file, m_options.input))
        error = QStringLiteral("\"%1\" cannot be encoded to itself").arg(m_options.input);
    if (error.isEmpty()) {
        m_report.settings = *settings;
        m_reader = VideoFileReader::open(m_options.input, &error);
    }
    if (error.isEmpty()) {
        m_report.settings.size = m_reader->properties().size;
        m_report.settings.rate = m_reader->properties().rate;
        m_report.settings.timeScale = m_reader->properties().timeScale;
        m_report.settings.rotation =
                turnToEncode(m_reader->properties().turn, settings->rotation, settings->mirrored);
        m_exitCode = Failure;
        if (QMediaServiceProviderPlugin *const backend = backendPlugin(&error)) {
            m_recording = std::make_unique<Recording>(backend);
            error = m_recording->problem(settings->codec);
        }
    }
    if (!error.isEmpty())
        printError(error);
    else
        m_exitCode = Success;
    if (error.isEmpty() && !m_reader->properties().turn.isExact)
        printNote(turnNote(m_options.input, m_reader->properties().turn));
    return error.isEmpty();
}

void EncodeCommand::start()
{
    connect(m_recording.get(), &Recording::started, this, &EncodeCommand::feed);
    connect(m_recording.get(), &Recording::unitWritten, this, &EncodeCommand::feed);
    connect(m_recording.get(), &Recording::failed, this,
            [this](const QString &error) { finish(Failure, error); });
    connect(
            m_recording.get(), &Recording::ended, this, [] { QCoreApplication::exit(); },
            Qt::QueuedConnection);
    QString error;
    if (!m_recording->start(m_report.settings, &error))
        finish(Failure, error);
}

/*! Keeps the encoder busy and its queue short: what it has no room for would be refused. */
void EncodeCommand::feed()
{
    while (!m_isFinished && m_recording->waiting() < MostWaiting) {
        if (!m_next.isValid() && !readPicture())
            return;
        if (!m_recording->encode(m_next))
            return; // goes with the next unit
        m_next = QVideoFrame();
    }
}

bool EncodeCommand::readPicture()
{
    QString error;
    switch (m_reader->read(&m_next, &error)) {
    case VideoFileReader::Result::Picture:
        if (m_size.isEmpty())
            m_size = m_next.size();
        if (m_next.size() == m_size)
            return true;
        error = sizeChange(m_options.input, m_size, m_next.size());
        break;
    case VideoFileReader::Result::End:
        error = m_reader->missingEnd();
        break;
    case VideoFileReader::Result::Failed:
        break;
    }
    finish(error.isEmpty() ? Success : Failure, error);
    return false;
}

void EncodeCommand::onTick()
{
    ++m_ticks;
    if (!progressIsLive() && m_ticks % ProgressTicks != 0)
        return;
    m_report.written = m_recording->written();
    QString text = progressText(m_report.seconds(), m_report.written.units, m_report.bitRate(), 0);
    const qint64 all = m_reader->properties().duration;
    if (all > 0)
        text += QStringLiteral(", %1 %").arg(
                qMin<qint64>(100, 100 * m_report.written.duration / all));
    printProgress(text);
}

/*! Ends when all that was taken is in the file. */
void EncodeCommand::finish(int exitCode, const QString &error)
{
    if (m_exitCode == Success)
        m_exitCode = exitCode;
    if (!error.isEmpty())
        printError(error);
    if (m_isFinished)
        return;
    m_isFinished = true;
    m_recording->end();
}

/*! Completes the file, also after a failure: what was encoded so far is good. */
int EncodeCommand::close()
{
    m_report.written = m_recording->written();
    m_report.speed =
            double(m_report.written.units) * 1000 / double(qMax<qint64>(1, m_time.elapsed()));
    QString error;
    m_report.isComplete = m_recording->close(&error);
    if (!m_report.isComplete && m_exitCode == Success) {
        m_exitCode = Failure;
        printError(error);
    }
    if (m_reader->damaged() > 0) {
        m_exitCode = Failure;
        printError(QStringLiteral("%1: is damaged in %2 places")
                           .arg(m_options.input, QString::number(m_reader->damaged())));
    }
    if (m_report.written.units == 0)
        return m_exitCode;
    const bool isPrinted =
            m_options.json ? printJson(QJsonDocument(toJson(m_report)), QJsonDocument::Compact)
                           : printLine(toText(m_report));
    return isPrinted ? m_exitCode : int(Failure);
}

} // namespace Tool
