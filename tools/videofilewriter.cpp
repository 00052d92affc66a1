// SPDX-License-Identifier: BSD-3-Clause
#include "videofilewriter.h"

#include "avpointers.h"
#include "streamparameters.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace Tool {
namespace {

constexpr int LargestRateDenominator = 100000; // of the frame rate as a fraction

QString systemError(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

QString leftOver(const QString &part)
{
    return QStringLiteral("\"%1\" is there already, from a recording that goes on or did not end; "
                          "delete it, or replace it with --force")
            .arg(part);
}

/*! What is there that is no file, and which one must not replace; empty where nothing is. */
QString obstacle(const QString &name)
{
    const QFileInfo info(name);
    if (info.isDir())
        return QStringLiteral("\"%1\" is a folder").arg(name);
    if (info.exists() && !info.isFile()) // a device, say
        return QStringLiteral("\"%1\" is not an ordinary file").arg(name);
    return QString();
}

/*! Why there cannot be a new file of that name; empty where there is one now. */
QString creationProblem(const QString &file)
{
    const QString inTheWay = obstacle(file);
    if (!inTheWay.isEmpty())
        return inTheWay;
    constexpr mode_t mode = 0666; // less the umask
    const int descriptor = ::open(QFile::encodeName(file).constData(),
                                  O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (descriptor < 0)
        return errno == EEXIST ? leftOver(file) : systemError(errno);
    ::close(descriptor);
    return QString();
}

} // namespace

VideoFileWriter::~VideoFileWriter()
{
    release();
}

QString VideoFileWriter::problem(const QString &file, bool replace)
{
    const QFileInfo info(file);
    if (!info.dir().exists())
        return QStringLiteral("the folder of \"%1\" does not exist").arg(file);
    for (const QString &name : { file, file + partSuffix() }) {
        const QString inTheWay = obstacle(name);
        if (!inTheWay.isEmpty())
            return inTheWay;
    }
    if (replace)
        return QString();
    if (info.exists() || info.isSymLink())
        return QStringLiteral("\"%1\" exists already; --force replaces it").arg(file);
    if (QFileInfo::exists(file + partSuffix()))
        return leftOver(file + partSuffix());
    return QString();
}

bool VideoFileWriter::replaces(const QString &file, const QString &input)
{
    const QString path = QFileInfo(input).canonicalFilePath();
    return !path.isEmpty() && (path == QFileInfo(file).canonicalFilePath() ||
                               path == QFileInfo(file + partSuffix()).canonicalFilePath());
}

bool VideoFileWriter::open(const QString &file, const Format &format, bool replace, QString *error)
{
    m_file = file;
    m_format = format;
    m_replace = replace;
    const auto container = containerOf(file);
    if (!container)
        return fail(QStringLiteral("its name ends in none of %1").arg(containerSuffixes()), error);
    if (replace && obstacle(partName()).isEmpty())
        QFile::remove(partName()); // another program may be writing to it
    // So that of two programs that begin at the same time one is told.
    const QString problem = creationProblem(partName());
    if (!problem.isEmpty())
        return fail(problem, error);
    int code = avformat_alloc_output_context2(&m_container, nullptr, container->muxer, nullptr);
    if (code >= 0) {
        const QByteArray url = "file:" + QFile::encodeName(partName());
        code = avio_open(&m_container->pb, url.constData(), AVIO_FLAG_WRITE);
    }
    if (code < 0)
        QFile::remove(partName());
    return code >= 0 || fail(avErrorText(code), error);
}

bool VideoFileWriter::write(const QByteArray &unit, qint64 time, bool keyFrame, QString *error)
{
    if (m_isBroken || !m_container)
        return fail(QStringLiteral("it cannot be written to any more"), error);
    if (!m_isBegun) {
        m_firstTime = time;
        if (!begin(unit, error))
            return false;
    }
    const AVStream *const stream = m_container->streams[0];
    const AvPointer<AVPacket> packet(av_packet_alloc());
    if (!packet)
        return fail(systemError(ENOMEM), error);
    packet->data = reinterpret_cast<std::uint8_t *>(const_cast<char *>(unit.constData()));
    packet->size = unit.size();
    packet->pts = packet->dts = m_lastTicks = ticks(time);
    packet->duration = av_rescale_q(1, av_inv_q(stream->avg_frame_rate), stream->time_base);
    packet->flags = keyFrame ? AV_PKT_FLAG_KEY : 0;
    int code = av_write_frame(m_container, packet.get());
    packet->data = nullptr; // not the packet's
    if (code >= 0)
        code = m_container->pb->error;
    return code >= 0 || fail(avErrorText(code), error);
}

/*! Ticks since the first unit, always more than those of the one before. */
qint64 VideoFileWriter::ticks(qint64 time)
{
    const AVStream *const stream = m_container->streams[0];
    if (!m_isBegun) {
        m_isBegun = true;
        return 0;
    }
    if (time < 0) {
        const qint64 period = av_rescale_q(1, av_inv_q(stream->avg_frame_rate), stream->time_base);
        return m_lastTicks + qMax<qint64>(1, period);
    }
    const qint64 sinceFirst = time - qMax<qint64>(0, m_firstTime);
    return qMax<qint64>(m_lastTicks + 1, av_rescale_q(sinceFirst, Microseconds, stream->time_base));
}

/*! Containers have the parameters of the stream in front, and these come with the first unit. */
bool VideoFileWriter::begin(const QByteArray &unit, QString *error)
{
    AVStream *const stream = avformat_new_stream(m_container, nullptr);
    if (!stream)
        return fail(systemError(ENOMEM), error);
    QString reason;
    if (!describeStream(m_format.codec, unit, m_format.size, stream->codecpar, &reason))
        return fail(reason, error);
    stream->time_base = { 1, m_format.timeScale };
    stream->avg_frame_rate = av_d2q(m_format.rate, LargestRateDenominator);
    const int code = avformat_write_header(m_container, nullptr);
    return code >= 0 || fail(avErrorText(code), error);
}

bool VideoFileWriter::close(QString *error)
{
    if (!m_container) {
        *error = QStringLiteral("nothing was recorded");
        return false;
    }
    if (m_isBroken) { // which was told
        release();
        return false;
    }
    if (!m_isBegun) {
        release();
        QFile::remove(partName());
        return fail(QStringLiteral("nothing was recorded"), error);
    }
    int code = av_write_trailer(m_container);
    const int closed = avio_closep(&m_container->pb);
    if (code >= 0)
        code = closed;
    if (code < 0)
        return fail(avErrorText(code), error);
    release();
    return rename(error);
}

bool VideoFileWriter::rename(QString *error)
{
    if (!m_replace && QFileInfo::exists(m_file))
        return fail(QStringLiteral("a file of that name has come meanwhile"), error);
    const QByteArray part = QFile::encodeName(partName());
    if (std::rename(part.constData(), QFile::encodeName(m_file).constData()) == 0)
        return true;
    return fail(systemError(errno), error);
}

bool VideoFileWriter::fail(const QString &reason, QString *error)
{
    *error = QStringLiteral("%1: %2").arg(m_file, reason);
    if (m_isBegun)
        *error += QStringLiteral("; what was written so far is in %1").arg(partName());
    else if (m_container && m_container->pb)
        QFile::remove(partName());
    m_isBroken = true;
    return false;
}

void VideoFileWriter::release()
{
    if (!m_container)
        return;
    if (m_container->pb)
        avio_closep(&m_container->pb);
    avformat_free_context(m_container);
    m_container = nullptr;
}

} // namespace Tool
