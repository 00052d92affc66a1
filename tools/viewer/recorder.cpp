// SPDX-License-Identifier: BSD-3-Clause
#include "recorder.h"

#include "backendplugin.h"
#include "codeclist.h"
#include "mediafolder.h"

namespace Viewer {
namespace {

constexpr int TickInterval = 250; // ms
constexpr int MostTries = 10;     // of names for a file

/*! Each by its name and in the order that people know, whatever the platform's. */
QStringList encodableCodecs()
{
    QString ignored; // told when the recording starts
    QStringList types;
    for (const Tool::CodecDescription &codec : Tool::availableCodecs(true, &ignored))
        types.append(codec.type);
    QStringList names;
    for (const QString &name : Tool::codecNames()) {
        if (types.contains(Tool::mimeType(*Tool::codecNamed(name))))
            names.append(name);
    }
    return names;
}

} // namespace

Recorder::Recorder(QObject *parent)
    : QObject(parent)
    , m_codecs(encodableCodecs())
{
    connect(&m_tick, &QTimer::timeout, this, &Recorder::progressChanged);
}

Recorder::~Recorder()
{
    if (m_isTaking)
        stopTaking();
    if (m_closing)
        m_closing->wait();
    // As it goes it waits for the encoder and serves events, of which one may tell of its end.
    const std::unique_ptr<Tool::Recording> recording = std::move(m_recording);
    if (recording)
        recording->disconnect(this);
}

void Recorder::setSource(RawPictures *source)
{
    if (source == m_source)
        return;
    stop(); // which is of the other one's pictures
    m_source = source;
    emit sourceChanged();
}

qreal Recorder::seconds() const
{
    return m_recording ? double(m_recording->written().duration) / 1e6 : 0;
}

qreal Recorder::bytes() const
{
    return m_recording ? double(m_recording->written().bytes) : 0;
}

int Recorder::dropped() const
{
    if (!m_recording)
        return 0;
    const RawPictures *const source = m_source;
    return int(m_recording->refused() + (m_isTaking && source ? source->dropped() : m_lost));
}

int Recorder::waiting() const
{
    return m_recording ? m_recording->waiting() : 0;
}

void Recorder::start(const QString &codec, int bitRate, const QSize &size, qreal rate)
{
    if (m_recording)
        return;
    Tool::RecordingSettings settings;
    settings.bitRate = bitRate;
    settings.size = size;
    settings.rate = rate;
    QString error;
    if (!prepare(codec, &settings, &error)) {
        m_recording.reset();
        fail(error);
        return;
    }
    m_tick.start(TickInterval);
    emit activeChanged();
    bool isStarted = m_recording->start(settings, &error);
    // Another program may have taken the name since it was looked for.
    for (int tries = 1; !isStarted && tries < MostTries && isTaken(settings.file); ++tries)
        isStarted = prepare(codec, &settings, &error) && m_recording->start(settings, &error);
    m_file = settings.file;
    if (!isStarted) {
        remove();
        fail(error);
    }
}

bool Recorder::prepare(const QString &codec, Tool::RecordingSettings *settings, QString *error)
{
    const RawPictures *const source = m_source;
    if (!source || !source->isAvailable() || settings->size.isEmpty()) {
        *error = QStringLiteral("there is no camera to record");
        return false;
    }
    QMediaServiceProviderPlugin *const backend = Tool::backendPlugin(error);
    const auto known = Tool::codecNamed(codec);
    if (backend && !known)
        *error = QStringLiteral("there is no encoder on this machine");
    if (!backend || !known)
        return false;
    settings->codec = *known;
    m_recording = std::make_unique<Tool::Recording>(backend);
    *error = m_recording->problem(*known);
    if (!error->isEmpty())
        return false;
    // The one kind of file that holds every codec, and that can be read even if it was cut off.
    settings->file = newFileName(QStandardPaths::MoviesLocation, QStringLiteral(".mkv"), error);
    connect(m_recording.get(), &Tool::Recording::started, this, &Recorder::onStarted);
    connect(m_recording.get(), &Tool::Recording::failed, this, [this](const QString &text) {
        fail(text);
        stop();
    });
    connect(m_recording.get(), &Tool::Recording::ended, this, &Recorder::onEnded,
            Qt::QueuedConnection);
    return !settings->file.isEmpty();
}

void Recorder::onStarted()
{
    RawPictures *const source = m_source;
    if (!source) {
        stop();
        return;
    }
    m_isTaking = true;
    m_lost = 0;
    connect(source, &RawPictures::pictureTaken, this, &Recorder::onPicture);
    source->begin();
}

void Recorder::onPicture(const QVideoFrame &frame)
{
    m_recording->encode(frame); // counts what it does not take
}

void Recorder::stop()
{
    if (!m_recording)
        return;
    if (m_isTaking)
        stopTaking();
    m_recording->end();
}

void Recorder::stopTaking()
{
    m_isTaking = false;
    RawPictures *const source = m_source;
    if (!source)
        return;
    m_lost = source->dropped();
    source->disconnect(this);
    source->end();
}

void Recorder::onEnded()
{
    if (!m_recording)
        return; // this is going
    m_closeError.clear();
    m_closing.reset(QThread::create([this] { m_isComplete = m_recording->close(&m_closeError); }));
    connect(m_closing.get(), &QThread::finished, this, &Recorder::onClosed, Qt::QueuedConnection);
    m_closing->start();
}

void Recorder::onClosed()
{
    m_closing->wait(); // for its very end
    m_closing.reset();
    const bool isEmpty = m_recording->written().units == 0;
    emit progressChanged();
    remove();
    if (isEmpty)
        return; // there is no file, and why was told or is plain to see
    if (m_isComplete)
        emit finished(m_file);
    else if (!m_closeError.isEmpty()) // else it was told when it happened
        fail(m_closeError);
}

void Recorder::remove()
{
    m_tick.stop();
    m_recording.reset();
    emit activeChanged();
    emit progressChanged();
}

void Recorder::fail(const QString &error)
{
    emit failed(QStringLiteral("The recording failed: %1.").arg(error));
}

} // namespace Viewer
