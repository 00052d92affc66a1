// SPDX-License-Identifier: BSD-3-Clause
#include "fileplayer.h"

#include "backendplugin.h"

#include <QScopedValueRollback>
#include <QVideoFrame>

namespace Tool {
namespace {

constexpr int MostNotices = 5; // what comes after is only counted

} // namespace

FilePlayer::FilePlayer(QAbstractVideoSurface *surface, QObject *parent)
    : QObject(parent)
    , m_surface(surface)
{
    m_due.setSingleShot(true);
    m_due.setTimerType(Qt::PreciseTimer);
    connect(&m_due, &QTimer::timeout, this, &FilePlayer::feed);
}

bool FilePlayer::open(const QString &path, std::optional<VideoCodec> codec, QString *error,
                      bool *isUsage)
{
    *isUsage = true;
    m_reader = StreamReader::open(path, codec, error);
    if (!m_reader)
        return false;
    *isUsage = false;
    QMediaServiceProviderPlugin *const backend = backendPlugin(error);
    if (!backend)
        return false;
    m_decoding = std::make_unique<Decoding>(backend, m_surface);
    *error = m_decoding->problem(m_reader->properties().codec);
    connect(m_decoding.get(), &Decoding::started, this, &FilePlayer::feed, Qt::QueuedConnection);
    connect(m_decoding.get(), &Decoding::roomWasMade, this, &FilePlayer::feed);
    connect(m_decoding.get(), &Decoding::damaged, this, &FilePlayer::notice);
    connect(m_decoding.get(), &Decoding::failed, this, &FilePlayer::failed);
    connect(m_decoding.get(), &Decoding::ended, this, &FilePlayer::onEnded);
    return error->isEmpty();
}

void FilePlayer::start()
{
    QString error;
    const StreamReader::Properties &properties = m_reader->properties();
    if (m_decoding->start(properties.codec, properties.size, &error))
        return;
    emit failed(error);
    stop();
}

void FilePlayer::feed()
{
    if (m_isFeeding) // from an event loop inside of it
        return;
    const QScopedValueRollback<bool> feeding(m_isFeeding, true);
    while (!m_isOver && (!m_condition || m_condition())) {
        if ((!m_next && !readUnit()) || !isDue() || !m_decoding->decode(*m_next))
            return;
        if (!m_time.isValid())
            m_time.start();
        m_next.reset();
    }
}

bool FilePlayer::isDue()
{
    if (!m_isRealTime || !m_time.isValid())
        return true;
    const qint64 left = m_next->due / 1000 - m_time.elapsed();
    if (left <= 0)
        return true;
    m_due.start(int(qMin<qint64>(left, 1000)));
    return false;
}

bool FilePlayer::readUnit()
{
    StreamUnit unit;
    QString error;
    switch (m_reader->read(&unit, &error)) {
    case StreamReader::Result::Unit:
        m_next = std::move(unit);
        return true;
    case StreamReader::Result::End:
        error = m_reader->missingEnd();
        break;
    case StreamReader::Result::Failed:
        break;
    }
    if (!error.isEmpty())
        notice(error);
    m_isComplete = true;
    m_isOver = true;
    m_decoding->drain();
    return false;
}

void FilePlayer::onPicture(const QVideoFrame &frame)
{
    m_decoding->onPicture(frame.startTime());
    m_lastPicture = m_time.isValid() ? m_time.nsecsElapsed() / 1000 : 0;
    // Not from within the surface, which others may be waiting for.
    QMetaObject::invokeMethod(this, &FilePlayer::feed, Qt::QueuedConnection);
}

void FilePlayer::stop()
{
    m_isOver = true;
    m_isComplete = false; // whatever is still inside is not wanted any more
    m_decoding->stop();
}

void FilePlayer::notice(const QString &trouble)
{
    m_hasTrouble = true;
    if (++m_noticed <= MostNotices)
        emit noticed(trouble);
}

void FilePlayer::onEnded()
{
    m_isOver = true;
    m_due.stop();
    emit ended();
}

double FilePlayer::seconds() const
{
    return double(m_lastPicture) / 1e6;
}

double FilePlayer::rate() const
{
    return m_lastPicture > 0 ? double(counts().pictures) / seconds() : 0;
}

QString FilePlayer::progress() const
{
    const qint64 elapsed = m_time.isValid() ? m_time.elapsed() : 0;
    QString text = QStringLiteral("%1 s: %2 pictures in, %3 out, %4 pictures/s")
                           .arg(elapsed / 1000)
                           .arg(counts().expected())
                           .arg(counts().pictures)
                           .arg(rate(), 0, 'f', 1);
    const qint64 all = m_reader->properties().duration;
    if (all > 0 && m_next)
        text += QStringLiteral(", %1 %").arg(qBound<qint64>(0, 100 * m_next->due / all, 100));
    return text;
}

} // namespace Tool
