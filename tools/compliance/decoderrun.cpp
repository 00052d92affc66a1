// SPDX-License-Identifier: BSD-3-Clause
#include "decoderrun.h"

#include "session.h"

#include <cstdio>
#include <utility>

namespace Compliance {
namespace {

using namespace Veltra::Ocelle;

void releaseBlock(void *argument)
{
    ++static_cast<Block *>(argument)->released;
}

} // namespace

DecoderProbe::DecoderProbe(Session *session)
    : m_session(session)
{
}

void DecoderProbe::onDecodedYCbCrFrame(const YCbCrFrame *frame)
{
    note();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_seen.push_back(lookAt(*frame, m_viewport));
        ++m_pictures;
    }
    m_session->wake();
}

void DecoderProbe::onDecodedGraphicBuffer(std::shared_ptr<GraphicBuffer> buffer)
{
    note();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_pictures;
        ++m_buffers;
    }
    m_session->viewer().show(std::move(buffer));
    m_session->wake();
}

void DecoderProbe::onDecoderParameterChanged(VideoDecoderParameter parameter,
                                             const std::string &value)
{
    note();
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    if (parameter != VideoDecoderParameter::ViewportParameter ||
        std::sscanf(value.c_str(), "(%d,%d,%d,%d)", &x, &y, &width, &height) != 4)
        return;
    const QRect viewport(x, y, width, height);
    m_session->viewer().setViewport(viewport);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_viewport = viewport;
}

void DecoderProbe::onDecoderError(const std::string &message)
{
    note();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_error = QString::fromStdString(message);
        ++m_errors;
    }
    m_session->wake();
}

void DecoderProbe::onDecoderEOS()
{
    note();
}

void DecoderProbe::note()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_isForbidden)
        ++m_forbidden;
}

void DecoderProbe::welcome()
{
    m_session->viewer().clear();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_seen.clear();
    m_pictures = 0;
    m_buffers = 0;
    m_errors = 0;
    m_isForbidden = false;
    m_forbidden = 0;
    m_error.clear();
}

void DecoderProbe::forbid()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isForbidden = true;
}

int DecoderProbe::forbidden() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_forbidden;
}

int DecoderProbe::pictures() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_pictures;
}

int DecoderProbe::errors() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_errors;
}

QString DecoderProbe::error() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_error;
}

std::vector<SeenPicture> DecoderProbe::seen()
{
    PictureViewer &viewer = m_session->viewer();
    int buffers = 0;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_buffers == 0)
            return m_seen;
        buffers = m_buffers;
    }
    m_session->waitUntil([&] { return viewer.count() >= buffers; }, m_session->patience().wait);
    return viewer.seen();
}

DecoderRun::DecoderRun(Session *session, CodecType type)
    : m_session(session)
    , m_type(type)
    , m_probe(session->keep<DecoderProbe>(session))
{
}

DecoderRun::~DecoderRun()
{
    m_session->guard([this] { drop(); });
}

bool DecoderRun::create()
{
    CodecManager *const manager = OcelleCodecManager();
    m_decoder = m_session->call(QStringLiteral("createVideoDecoder()"),
                                [&] { return manager->createVideoDecoder(m_type, 0); });
    m_probe->welcome();
    m_isAttached = bool(m_decoder);
    if (m_decoder)
        m_session->call(QStringLiteral("VideoDecoder::lockAndSetListener()"),
                        [&] { m_decoder->lockAndSetListener(m_probe); });
    return bool(m_decoder);
}

DecoderConfig DecoderRun::config() const
{
    return { m_type, PictureWidth, PictureHeight, PictureRate, { 0, 0 } };
}

bool DecoderRun::initialize()
{
    return initialize(config());
}

bool DecoderRun::initialize(const DecoderConfig &config)
{
    const bool isDone = m_session->call(QStringLiteral("VideoDecoder::initialize()"),
                                        [&] { return m_decoder->initialize(config); });
    m_isInitialized = m_isInitialized || isDone;
    return isDone;
}

bool DecoderRun::decode(const Unit &unit)
{
    auto *const block = m_session->keep<Block>();
    block->data = unit.data;
    m_blocks.push_back(block);
    const auto *const data = reinterpret_cast<const unsigned char *>(block->data.data());
    const bool isTaken = m_session->call(QStringLiteral("decode()"), [&] {
        return m_decoder->decode(data, block->data.size(), unit.timestamp, unit.type, releaseBlock,
                                 block);
    });
    m_probe->seen(); // so that the viewer has no more of them waiting than it holds
    return isTaken;
}

bool DecoderRun::decodeAll(const std::vector<Unit> &units)
{
    for (const Unit &unit : units) {
        if (!decode(unit))
            return false;
    }
    return true;
}

void DecoderRun::flush()
{
    m_session->call(QStringLiteral("flush()"), [&] { m_decoder->flush(); });
}

void DecoderRun::drain()
{
    m_session->call(QStringLiteral("drain()"), [&] { m_decoder->drain(); });
}

void DecoderRun::stop()
{
    m_isInitialized = false; // first: what throws is not called again
    m_session->call(QStringLiteral("VideoDecoder::stop()"), [&] { m_decoder->stop(); });
}

void DecoderRun::detach()
{
    m_isAttached = false;
    m_session->call(QStringLiteral("VideoDecoder::lockAndSetListener()"),
                    [&] { m_decoder->lockAndSetListener(nullptr); });
    m_probe->forbid();
}

void DecoderRun::drop()
{
    if (!m_decoder)
        return;
    if (std::exchange(m_isInitialized, false)) {
        flush();
        stop();
    }
    if (m_isAttached)
        detach();
    m_session->call(QStringLiteral("dropping the decoder"), [&] { m_decoder.reset(); });
}

QString DecoderRun::trouble() const
{
    const QString error = m_probe->error();
    return error.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(error);
}

} // namespace Compliance
