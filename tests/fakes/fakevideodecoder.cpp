// SPDX-License-Identifier: BSD-3-Clause
#include "fakevideodecoder.h"

#include "calllog.h"
#include "fakedecoderscript.h"

#include <cstdlib>
#include <utility>

using namespace Veltra::Ocelle;

FakeVideoDecoder::FakeVideoDecoder(int number, std::shared_ptr<FakeDecoderScript> script)
    : m_script(std::move(script))
    , m_object(QStringLiteral("decoder %1").arg(number))
{
}

FakeVideoDecoder::~FakeVideoDecoder()
{
    if (m_script->onDestroy)
        m_script->onDestroy(*this);
    releaseBlocks();
    log(QStringLiteral("destroyed"));
}

bool FakeVideoDecoder::initialize(DecoderConfig config)
{
    log(QStringLiteral("initialize(codec %1, %2x%3, %4 fps)")
                .arg(static_cast<int>(config.codecType))
                .arg(config.width)
                .arg(config.height)
                .arg(config.frameRate));
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_config = config;
    }
    m_script->initializeGate.pass();
    if (m_script->onInitialize)
        m_script->onInitialize(*this);
    return !m_script->initializeFails;
}

bool FakeVideoDecoder::decode(const unsigned char *data, std::uint64_t size,
                              std::uint64_t timestamp, FrameType type, void (*release)(void *),
                              void *releaseArg)
{
    const QByteArray payload(reinterpret_cast<const char *>(data), static_cast<int>(size));
    log(QStringLiteral("decode(%1, type %2, %3)")
                .arg(timestamp)
                .arg(static_cast<int>(type))
                .arg(QString::fromLatin1(payload)));
    ++m_script->blocksTaken;
    if (release != &std::free || releaseArg != data)
        ++m_script->foreignBlocks;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_blocks.push_back({ payload.size(), release, releaseArg });
    }
    m_script->decodeGate.pass();
    if (payload != QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)))
        log(QStringLiteral("lost a block's bytes"));
    if (!m_script->keepsBlocks)
        releaseBlocks();
    if (m_script->onDecode)
        m_script->onDecode(*this);
    return !m_script->decodeFails;
}

void FakeVideoDecoder::flush()
{
    log(QStringLiteral("flush()"));
    m_script->flushGate.pass();
    if (m_script->onFlush)
        m_script->onFlush(*this);
}

void FakeVideoDecoder::drain()
{
    log(QStringLiteral("drain()"));
    m_script->drainGate.pass();
    if (m_script->onDrain)
        m_script->onDrain(*this);
}

void FakeVideoDecoder::stop()
{
    log(QStringLiteral("stop()"));
    m_script->stopGate.pass();
    if (m_script->onStop)
        m_script->onStop(*this);
}

bool FakeVideoDecoder::deliver(std::shared_ptr<GraphicBuffer> buffer)
{
    return tell([&](VideoDecoderListener *listener) {
        listener->onDecodedGraphicBuffer(std::move(buffer));
    });
}

bool FakeVideoDecoder::deliver(const YCbCrFrame *frame)
{
    return tell([&](VideoDecoderListener *listener) { listener->onDecodedYCbCrFrame(frame); });
}

bool FakeVideoDecoder::changeParameter(VideoDecoderParameter parameter, const std::string &value)
{
    return tell([&](VideoDecoderListener *listener) {
        listener->onDecoderParameterChanged(parameter, value);
    });
}

bool FakeVideoDecoder::fail(const std::string &message)
{
    return tell([&](VideoDecoderListener *listener) { listener->onDecoderError(message); });
}

bool FakeVideoDecoder::endStream()
{
    return tell([](VideoDecoderListener *listener) { listener->onDecoderEOS(); });
}

DecoderConfig FakeVideoDecoder::config() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_config;
}

QList<QByteArray> FakeVideoDecoder::keptBytes() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    QList<QByteArray> kept;
    for (const Block &block : m_blocks)
        kept.append(QByteArray(static_cast<const char *>(block.arg), block.size));
    return kept;
}

void FakeVideoDecoder::releaseBlocks()
{
    std::vector<Block> blocks;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        blocks.swap(m_blocks);
    }
    for (const Block &block : blocks) {
        block.release(block.arg);
        ++m_script->blocksReleased;
    }
}

void FakeVideoDecoder::log(const QString &what) const
{
    CallLog::instance().add(m_object, what);
}

template <typename Function>
bool FakeVideoDecoder::tell(Function function)
{
    VideoDecoderListener *listener;
    {
        std::lock_guard<std::mutex> lock(m_listenerMutex);
        listener = m_listener;
    }
    if (listener)
        function(listener);
    return listener;
}
