// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "encoderchoice.h"
#include "encoderinput.h"

#include <ocelle/videoencoder.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * An encoder of this machine, for one kind of codec.
 *
 * Pictures are mirrored top to bottom and then turned clockwise, as the parameters say. One of
 * another size than those before, be it by turning, makes the encoder start anew with a key frame
 * of that size, as does another bit rate mode while it runs. H.264 and H.265 round an odd size up
 * to an even one, repeating the last column or line; VP8 and VP9 keep it. encode() returns when the
 * picture is compressed and the listener has it, and keeps no picture. There is no end of stream to
 * tell of: nothing but the encoder's end stops it.
 *
 * Threads: one operation at a time, lockAndSetListener() from any thread. The listener is called
 *          on the thread of encode(), initialize() or setParameter(), with the lock of
 *          lockAndSetListener() held. It may call that, setBitrate() and setParameter() and drop
 *          the encoder; encode() and initialize() are refused from there.
 * Errors:  false, with the reason to onEncoderError() but for a bit rate of 0 or less, which asks
 *          for no change. A picture that failed is gone; the next one starts the codec anew.
 */
class LocalVideoEncoder final : public VideoEncoder,
                                public std::enable_shared_from_this<LocalVideoEncoder>
{
public:
    /*! \a candidates encode \a type, the preferred one first. */
    LocalVideoEncoder(CodecType type, std::vector<std::shared_ptr<EncoderFactory>> candidates);
    ~LocalVideoEncoder() override;

    bool initialize(EncoderConfig config) override;
    bool encode(std::shared_ptr<YCbCrFrame> frame, bool keyFrame) override;
    /*!
     * Holds from the next picture on. Where the codec has to start anew for it, a key frame, small
     * changes wait for the next key frame and rapid ones are taken together twice a second.
     */
    bool setBitrate(int bitrate) override;
    bool setParameter(VideoEncoderParameter parameter, const std::string &value) override;
    bool encodeRGB(std::shared_ptr<RGBFrame> frame, bool keyFrame) override;

private:
    struct Waiting // a picture inside the codec
    {
        std::int64_t index;
        std::int64_t timestamp;
    };

    std::shared_ptr<LocalVideoEncoder> keepAlive();
    template <class Frame>
    bool encodeFrame(std::shared_ptr<Frame> frame, bool keyFrame);
    bool makeReady(PictureSize size, bool keyFrame);
    bool applyBitrate(bool keyFrame);
    bool isReopenDue(bool keyFrame) const;
    bool open();
    bool compress(const PictureView &picture, std::int64_t timestamp, bool keyFrame);
    void deliver(const EncodedUnit &unit);

    template <class Call>
    void tell(const Call &call);
    bool refuse(const std::string &reason);

    const CodecType m_type;
    EncoderChoice m_choice;
    EncoderInput m_input;
    EncoderSettings m_settings; // as the codec is, or will be, opened with
    bool m_isInitialized = false;
    bool m_isOpen = false;  // the codec
    bool m_isStale = false; // it was opened with other settings
    int m_wantedBitrate = 0;
    std::int64_t m_nextIndex = 0;   // of a picture since the codec was opened
    std::int64_t m_sinceKey = 0;    // pictures
    std::vector<Waiting> m_waiting; // oldest first
};

} // namespace Ocelle
} // namespace Veltra
