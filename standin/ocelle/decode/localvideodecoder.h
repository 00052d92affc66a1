// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "avdecoder.h"
#include "decodedpictures.h"
#include "decodersettings.h"
#include "instancecount.h"
#include "streamscan.h"

#include <ocelle/videodecoder.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * A decoder of this machine, for one kind of codec. H.264 and H.265 come with start codes.
 *
 * A compressed frame is copied and given back before decode() returns. Pictures come out in the
 * order they are shown in, each with the timestamp of its compressed frame, whole as they were
 * coded; which part is to be seen is told before the first one, when it changes and, where it is
 * not all of the picture, again with each key frame. Decoding begins with a key frame, whatever it
 * is called; what comes before is dropped. After drain(), flush() and the end of a sequence it has
 * to begin anew.
 *
 * Threads: one operation at a time, lockAndSetListener() from any thread. The listener is called
 *          on the thread of the operation, with the lock of lockAndSetListener() held. It may call
 *          that, drop the decoder and call flush() and stop(), which then take effect as soon as
 *          it returns; initialize(), decode() and drain() are refused from there.
 * Errors:  false for a frame that is refused, with the reason to onDecoderError(). Damage in the
 *          stream is told of there too, once until a key frame has come out whole; pictures that
 *          are damaged in parts, or refer to such, are still shown, but not before the first whole
 *          one. Damage that the codec does not notice nobody learns of: libavcodec 5.1 may overlook
 *          that of reordered H.264 with threads for throughput.
 */
class LocalVideoDecoder final : public VideoDecoder,
                                public std::enable_shared_from_this<LocalVideoDecoder>
{
public:
    /*! Holds \a token until stop(). \a name is the codec's, for messages. */
    LocalVideoDecoder(CodecType type, std::string name, AvDecoderKind kind,
                      DecoderSettings settings, InstanceCount::Token token);
    ~LocalVideoDecoder() override;

    /*! The size is only what is expected. */
    bool initialize(DecoderConfig config) override;
    bool decode(const unsigned char *data, std::uint64_t size, std::uint64_t timestamp,
                FrameType type, void (*release)(void *), void *releaseArg) override;
    void flush() override;
    void drain() override;
    void stop() override;

private:
    struct Unit // a compressed frame inside the codec
    {
        std::uint64_t timestamp = 0;
        bool isKey = false;
    };
    struct Visible
    {
        int width, height;                     // of the whole picture
        int x, y, visibleWidth, visibleHeight; // of what is to be seen
    };
    enum class Ending { None, Flush, Stop };

    std::shared_ptr<LocalVideoDecoder> keepAlive();
    std::string refusal(const unsigned char *data, std::uint64_t size) const;
    void decodeLoaded(std::uint64_t timestamp);
    bool mayDecode(const UnitReport &report);
    void keepHead(const UnitReport &report);
    void drainInside();
    void drainCodec();
    template <class Call>
    void putOut(const Call &call);
    void end(Ending ending);
    void finishEnding();
    void beginAnew();

    void deliver(const AvDecoder::Picture &picture);
    bool isWorthShowing(const AvDecoder::Picture &picture, const Unit &unit);
    void tellVisible(const AVFrame &frame, bool isKey);
    void hand(std::shared_ptr<FramePicture> picture);

    template <class Call>
    void tell(const Call &call);
    void tellError(const std::string &reason);
    bool refuse(const std::string &reason);
    void reportDamage(const std::string &reason);
    void reportLoss(const std::string &reason);
    void reportMissingDevice();

    static constexpr std::size_t MostInside = 256; // compressed frames, more than any codec keeps

    const CodecType m_type;
    const std::string m_name;
    const bool m_wantsDevice;
    const DecoderSettings m_settings;
    InstanceCount::Token m_token;
    const std::unique_ptr<StreamScan> m_scan;
    AvDecoder m_codec;
    DecodedPictures m_pictures;

    std::vector<std::uint8_t> m_head;     // parameters for the next compressed frame
    std::array<Unit, MostInside> m_units; // by the lower bits of their index
    std::int64_t m_nextIndex = 0;
    std::uint64_t m_sequence = 0; // of the next picture
    Visible m_visible {};         // as last told
    bool m_waitsForKey = true;
    bool m_hasWhole = false;        // a picture came out whole since the key frame waited for
    bool m_isDamaged = false;       // the listener knows
    std::int64_t m_damageEnd = 0;   // index of the first compressed frame after the damage
    bool m_knowsNoDevice = false;   // a line said so
    Ending m_ending = Ending::None; // asked for by the listener
};

} // namespace Ocelle
} // namespace Veltra
