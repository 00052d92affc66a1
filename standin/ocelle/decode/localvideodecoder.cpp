// SPDX-License-Identifier: BSD-3-Clause
#include "localvideodecoder.h"

#include "encode/encodersettings.h"
#include "listenercallscope.h"
#include "log.h"

#include <mutex>
#include <utility>

extern "C" {
#include <libavcodec/packet.h>
#include <libavutil/frame.h>
}

namespace Veltra {
namespace Ocelle {

LocalVideoDecoder::LocalVideoDecoder(CodecType type, std::string name, AvDecoderKind kind,
                                     DecoderSettings settings, InstanceCount::Token token)
    : m_type(type)
    , m_name(std::move(name))
    , m_wantsDevice(!kind.devicePath.empty())
    , m_settings(settings)
    , m_token(std::move(token))
    , m_scan(StreamScan::create(type))
    , m_codec(std::move(kind))
{
}

LocalVideoDecoder::~LocalVideoDecoder() = default;

// For as long as an operation goes on: its callbacks may drop the last other reference.
std::shared_ptr<LocalVideoDecoder> LocalVideoDecoder::keepAlive()
{
    return weak_from_this().lock();
}

bool LocalVideoDecoder::initialize(DecoderConfig config)
{
    const auto self = keepAlive();
    if (ListenerCallScope::isActive(this))
        return refuse("cannot be configured from within its own callback");
    if (config.codecType != m_type || !m_scan)
        return refuse("cannot do codec " + std::to_string(int(config.codecType)));
    if (!m_token)
        return refuse("cannot be configured once it is stopped");
    if (config.width > MaxPictureSide || config.height > MaxPictureSide)
        return refuse("pictures of " + std::to_string(config.width) + 'x' +
                      std::to_string(config.height) + " are too large");
    std::string error;
    if (!m_codec.open(m_settings, config.width, config.height, &error))
        return refuse(error);
    beginAnew();
    return true;
}

bool LocalVideoDecoder::decode(const unsigned char *data, std::uint64_t size,
                               std::uint64_t timestamp, FrameType, void (*release)(void *),
                               void *releaseArg)
{
    const auto self = keepAlive();
    std::string reason = refusal(data, size);
    const bool isLoaded = reason.empty() && m_codec.load(data, std::size_t(size), &reason);
    if (release)
        release(releaseArg);
    if (!isLoaded)
        return refuse(reason);
    decodeLoaded(timestamp);
    finishEnding();
    return true;
}

std::string LocalVideoDecoder::refusal(const unsigned char *data, std::uint64_t size) const
{
    if (ListenerCallScope::isActive(this))
        return "takes no frame from within its own callback";
    if (!m_codec.isOpen())
        return m_token ? "takes no frame before it is configured"
                       : "takes no frame once it is stopped";
    if (!data || size == 0)
        return "there is no frame";
    return {};
}

void LocalVideoDecoder::decodeLoaded(std::uint64_t timestamp)
{
    const AVPacket &packet = m_codec.loaded();
    const UnitReport report = m_scan->examine(packet.data, std::size_t(packet.size));
    if (!mayDecode(report)) {
        keepHead(report);
    } else {
        const std::int64_t index = m_nextIndex++;
        m_units[std::size_t(index) % MostInside] = { timestamp, report.isKey };
        if (report.isSelfContained)
            m_head.clear(); // may be damaged
        const std::vector<std::uint8_t> head = std::exchange(m_head, {});
        putOut([&](const AvDecoder::PictureFunction &onPicture, std::string *error) {
            return (head.empty() || m_codec.prepend(head, error)) &&
                   m_codec.decode(index, report.reorders, onPicture, error);
        });
        m_waitsForKey = m_waitsForKey || m_codec.isStuck();
        if (m_waitsForKey) // nothing that is inside is of use to what comes
            drainCodec();
        reportMissingDevice();
    }
    if (!report.endsSequence)
        return;
    drainInside();
    if (report.endsStream)
        tell([](VideoDecoderListener &listener) { listener.onDecoderEOS(); });
}

// Whether the codec should see that frame.
bool LocalVideoDecoder::mayDecode(const UnitReport &report)
{
    if (!report.problem.empty()) {
        reportDamage(report.problem);
        return false;
    }
    if (!report.hasPicture)
        return false;
    if (m_waitsForKey && !report.isKey) {
        reportDamage("waiting for a key frame");
        return false;
    }
    if (m_waitsForKey) {
        m_waitsForKey = false;
        m_hasWhole = false;
    }
    if (!report.gap.empty())
        reportDamage(report.gap);
    return true;
}

// What comes without a picture, or with one that is dropped, goes to the codec with the next one.
void LocalVideoDecoder::keepHead(const UnitReport &report)
{
    constexpr std::size_t most = 1 << 16; // bytes, more than any parameters need
    const bool isOfUse = report.parameters != 0 || (!m_waitsForKey && !report.endsSequence);
    if (!report.problem.empty() || !isOfUse || report.headSize > most)
        return;
    if (m_head.size() + report.headSize > most)
        m_head.clear();
    const std::uint8_t *const data = m_codec.loaded().data;
    m_head.insert(m_head.end(), data, data + report.headSize);
}

void LocalVideoDecoder::flush()
{
    end(Ending::Flush);
}

void LocalVideoDecoder::stop()
{
    end(Ending::Stop);
}

void LocalVideoDecoder::drain()
{
    const auto self = keepAlive();
    if (ListenerCallScope::isActive(this)) {
        refuse("cannot be drained from within its own callback");
        return;
    }
    if (!m_codec.isOpen())
        return;
    drainInside();
    finishEnding();
}

void LocalVideoDecoder::drainInside()
{
    drainCodec();
    beginAnew();
}

void LocalVideoDecoder::drainCodec()
{
    putOut([this](const AvDecoder::PictureFunction &onPicture, std::string *error) {
        return m_codec.drain(onPicture, error);
    });
}

// One call to the codec. What comes out of it after an error may refer to what is lost.
template <class Call>
void LocalVideoDecoder::putOut(const Call &call)
{
    std::string error;
    const auto onPicture = [this, &error](const AvDecoder::Picture &picture) {
        if (!error.empty())
            reportLoss("damaged data: " + error);
        deliver(picture);
    };
    if (!call(onPicture, &error))
        reportLoss("damaged data: " + error);
}

void LocalVideoDecoder::end(Ending ending)
{
    const auto self = keepAlive();
    if (m_ending != Ending::Stop)
        m_ending = ending;
    if (!ListenerCallScope::isActive(this))
        finishEnding();
}

void LocalVideoDecoder::finishEnding()
{
    const Ending ending = std::exchange(m_ending, Ending::None);
    if (ending == Ending::None)
        return;
    if (ending == Ending::Stop) {
        m_codec.close();
        m_head.clear();
        m_token.reset();
    } else if (m_codec.isOpen()) {
        m_codec.flush();
    }
    beginAnew();
}

void LocalVideoDecoder::beginAnew()
{
    m_waitsForKey = true;
    m_isDamaged = false;
    m_scan->restart();
}

void LocalVideoDecoder::deliver(const AvDecoder::Picture &picture)
{
    const Unit unit = m_units[std::size_t(picture.index) % MostInside];
    if (m_ending != Ending::None || !isWorthShowing(picture, unit))
        return;
    const AVFrame &frame = *picture.frame;
    if (frame.width > MaxPictureSide || frame.height > MaxPictureSide) {
        reportDamage("pictures of " + std::to_string(frame.width) + 'x' +
                     std::to_string(frame.height) + " are too large");
        return;
    }
    tellVisible(frame, unit.isKey);
    const std::shared_ptr<FramePicture> made = m_pictures.make(picture.frame);
    if (!made) {
        reportDamage("pictures of that kind cannot be shown");
        return;
    }
    made->timestamp = std::int64_t(unit.timestamp); // all bits, as they are
    made->sequence = m_sequence++;
    made->live = false;
    hand(made);
}

bool LocalVideoDecoder::isWorthShowing(const AvDecoder::Picture &picture, const Unit &unit)
{
    if (picture.isDamaged) {
        reportLoss("parts of a picture are damaged");
        return m_hasWhole;
    }
    if (m_waitsForKey && !m_hasWhole && !unit.isKey) // refers to what did not come out whole
        return false;
    m_hasWhole = true;
    if (unit.isKey && picture.index >= m_damageEnd)
        m_isDamaged = false;
    return true;
}

void LocalVideoDecoder::tellVisible(const AVFrame &frame, bool isKey)
{
    const auto left = int(frame.crop_left);
    const auto top = int(frame.crop_top);
    const Visible visible { frame.width,
                            frame.height,
                            left,
                            top,
                            frame.width - left - int(frame.crop_right),
                            frame.height - top - int(frame.crop_bottom) };
    const Visible &old = m_visible;
    const bool isWhole =
            visible.visibleWidth == visible.width && visible.visibleHeight == visible.height;
    const bool isSame = visible.width == old.width && visible.height == old.height &&
                        visible.x == old.x && visible.y == old.y &&
                        visible.visibleWidth == old.visibleWidth &&
                        visible.visibleHeight == old.visibleHeight;
    if (isSame && (isWhole || !isKey)) // with a key frame for whoever has come to watch since
        return;
    m_visible = visible;
    const std::string text = '(' + std::to_string(visible.x) + ',' + std::to_string(visible.y) +
                             ',' + std::to_string(visible.visibleWidth) + ',' +
                             std::to_string(visible.visibleHeight) + ')';
    tell([&text](VideoDecoderListener &listener) {
        listener.onDecoderParameterChanged(VideoDecoderParameter::ViewportParameter, text);
    });
}

void LocalVideoDecoder::hand(std::shared_ptr<FramePicture> picture)
{
    if (m_settings.output == DecoderOutput::Buffer) {
        tell([&picture](VideoDecoderListener &listener) {
            listener.onDecodedGraphicBuffer(std::move(picture));
        });
        return;
    }
    const bool isPlanar = picture->planeCount == 3;
    const GraphicBuffer::Plane &chroma = picture->planes[1];
    YCbCrFrame frame {};
    frame.y = picture->planes[0].data;
    frame.cb = chroma.data;
    frame.cr = isPlanar ? picture->planes[2].data : chroma.data + 1;
    frame.yStride = std::uint16_t(picture->planes[0].stride);
    frame.cStride = std::uint16_t(chroma.stride);
    frame.chromaStep = isPlanar ? 1 : 2;
    frame.width = std::uint16_t(picture->width);
    frame.height = std::uint16_t(picture->height);
    frame.timestamp = picture->timestamp;
    tell([&frame](VideoDecoderListener &listener) { listener.onDecodedYCbCrFrame(&frame); });
}

// One call to the listener, if there is one, under its lock.
template <class Call>
void LocalVideoDecoder::tell(const Call &call)
{
    std::unique_lock<std::mutex> lock(m_listenerMutex, std::defer_lock);
    if (!ListenerCallScope::isActive(this)) // else this thread has it already
        lock.lock();
    if (!m_listener)
        return;
    const ListenerCallScope scope(this);
    call(*m_listener);
}

void LocalVideoDecoder::tellError(const std::string &reason)
{
    const std::string text = std::string(codecName(m_type)) + ": " + reason;
    tell([&text](VideoDecoderListener &listener) { listener.onDecoderError(text); });
}

bool LocalVideoDecoder::refuse(const std::string &reason)
{
    tellError(reason);
    return false;
}

void LocalVideoDecoder::reportDamage(const std::string &reason)
{
    m_damageEnd = m_nextIndex;
    if (!std::exchange(m_isDamaged, true))
        tellError(reason);
}

// Damage that the codec found. Before the first whole picture there is nothing to go on from.
void LocalVideoDecoder::reportLoss(const std::string &reason)
{
    m_waitsForKey = m_waitsForKey || !m_hasWhole;
    reportDamage(reason);
}

void LocalVideoDecoder::reportMissingDevice()
{
    if (!m_wantsDevice || m_knowsNoDevice || m_codec.usesDevice() || !m_hasWhole)
        return;
    m_knowsNoDevice = true;
    printLine("taking software for this stream, since " + m_name + " cannot do it");
}

} // namespace Ocelle
} // namespace Veltra
