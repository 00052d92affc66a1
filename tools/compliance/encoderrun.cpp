// SPDX-License-Identifier: BSD-3-Clause
#include "encoderrun.h"

#include "session.h"

#include <utility>

namespace Compliance {

using namespace Veltra::Ocelle;

EncoderProbe::EncoderProbe(Session *session)
    : m_session(session)
{
}

void EncoderProbe::onEncodedFrame(unsigned char *data, unsigned long size, unsigned long timestamp,
                                  FrameType type)
{
    note();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_units.push_back(
                { std::string(reinterpret_cast<const char *>(data), size), timestamp, type });
    }
    m_session->wake();
}

void EncoderProbe::onEncoderParameterChanged(VideoEncoderParameter, const std::string &)
{
    note();
}

void EncoderProbe::onEncoderError(const std::string &message)
{
    note();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_error = QString::fromStdString(message);
}

void EncoderProbe::onEncoderEOS()
{
    note();
}

void EncoderProbe::note()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_isForbidden)
        ++m_forbidden;
}

void EncoderProbe::forbid()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isForbidden = true;
}

int EncoderProbe::forbidden() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_forbidden;
}

std::vector<Unit> EncoderProbe::units() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_units;
}

int EncoderProbe::unitCount() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return int(m_units.size());
}

QString EncoderProbe::error() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_error;
}

EncoderRun::EncoderRun(Session *session, CodecType type)
    : m_session(session)
    , m_type(type)
    , m_probe(session->keep<EncoderProbe>(session))
{
}

EncoderRun::~EncoderRun()
{
    m_session->guard([this] { drop(); });
}

bool EncoderRun::create()
{
    CodecManager *const manager = OcelleCodecManager();
    m_session->call(QStringLiteral("prepare()"), [&] { return manager->prepare(); });
    m_encoder = m_session->call(QStringLiteral("createVideoEncoder()"),
                                [&] { return manager->createVideoEncoder(m_type, 0); });
    m_isAttached = bool(m_encoder);
    if (m_encoder)
        m_session->call(QStringLiteral("VideoEncoder::lockAndSetListener()"),
                        [&] { m_encoder->lockAndSetListener(m_probe); });
    return bool(m_encoder);
}

EncoderConfig EncoderRun::config(int bitRate) const
{
    return { std::int32_t(m_type), PictureWidth, PictureHeight, PictureWidth,
             PictureHeight,        bitRate,      PictureRate };
}

bool EncoderRun::initialize(int bitRate)
{
    return initialize(config(bitRate));
}

bool EncoderRun::initialize(const EncoderConfig &config)
{
    return m_session->call(QStringLiteral("VideoEncoder::initialize()"),
                           [&] { return m_encoder->initialize(config); });
}

bool EncoderRun::setParameter(VideoEncoderParameter parameter, const std::string &value)
{
    return m_session->call(QStringLiteral("setParameter()"),
                           [&] { return m_encoder->setParameter(parameter, value); });
}

void EncoderRun::setBitrate(int bitRate)
{
    m_session->call(QStringLiteral("setBitrate()"), [&] { return m_encoder->setBitrate(bitRate); });
}

bool EncoderRun::encode(std::uint32_t number, std::int64_t timestamp, bool keyFrame, bool noise)
{
    auto picture = makePicture(number, timestamp, m_pictures, noise);
    const bool isTaken = m_session->call(QStringLiteral("encode()"), [&] {
        return m_encoder->encode(std::move(picture), keyFrame);
    });
    return waitFor(isTaken);
}

bool EncoderRun::encodeRgb(std::uint32_t number, std::int64_t timestamp, bool keyFrame)
{
    auto picture = makeRgbPicture(number, timestamp, m_pictures);
    const bool isTaken = m_session->call(QStringLiteral("encodeRGB()"), [&] {
        return m_encoder->encodeRGB(std::move(picture), keyFrame);
    });
    return waitFor(isTaken);
}

// Until no more than MostInside are inside.
bool EncoderRun::waitFor(bool isTaken)
{
    if (!isTaken)
        return false;
    ++m_taken;
    return m_session->waitUntil([&] { return m_probe->unitCount() >= m_taken - MostInside; },
                                m_session->patience().wait);
}

bool EncoderRun::encode(std::shared_ptr<YCbCrFrame> frame)
{
    return m_session->call(QStringLiteral("encode()"),
                           [&] { return m_encoder->encode(std::move(frame), false); });
}

void EncoderRun::detach()
{
    m_isAttached = false; // first: what throws is not called again
    m_session->call(QStringLiteral("VideoEncoder::lockAndSetListener()"),
                    [&] { m_encoder->lockAndSetListener(nullptr); });
    m_probe->forbid();
}

void EncoderRun::drop()
{
    if (!m_encoder)
        return;
    if (m_isAttached)
        detach();
    m_session->call(QStringLiteral("dropping the encoder"), [&] { m_encoder.reset(); });
}

QString EncoderRun::keepingProblem()
{
    drop();
    const PictureCount &count = *m_pictures;
    if (m_session->waitUntil([&] { return count.released == count.made; },
                             m_session->patience().wait))
        return QString();
    return QStringLiteral("of %1 pictures it keeps %2 after it was dropped")
            .arg(count.made)
            .arg(count.made - count.released);
}

QString EncoderRun::trouble() const
{
    const QString error = m_probe->error();
    return error.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(error);
}

std::int64_t stampOf(int number)
{
    constexpr std::int64_t period = 33000; // whole milliseconds, for those who round
    return number * period;
}

std::vector<Unit> makeStream(Session *session, CodecType type, int count, QString *why,
                             const std::set<int> &keys)
{
    EncoderRun run(session, type);
    if (!run.create() || !run.initialize()) {
        *why = QStringLiteral("no encoder of this platform makes a stream for it") + run.trouble();
        return {};
    }
    for (int number = 0; number < count; ++number) {
        if (!run.encode(std::uint32_t(number), stampOf(number), keys.count(number) > 0)) {
            *why = QStringLiteral("the encoder makes no stream for it") + run.trouble();
            return {};
        }
    }
    session->waitUntil([&] { return run.probe().unitCount() >= count; }, session->patience().quiet);
    const std::vector<Unit> units = run.probe().units();
    if (units.empty() || units.front().type != FrameType::Key) {
        *why = QStringLiteral("the encoder makes no stream that begins with a key frame");
        return {};
    }
    return units;
}

} // namespace Compliance
