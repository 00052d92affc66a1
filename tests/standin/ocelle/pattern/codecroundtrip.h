// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "picture.h"

#include <functional>
#include <memory>
#include <string>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;

/*!
 * Encodes YU12 pictures with libavcodec at a low bit rate, decodes them at once and hands back what
 * came out, in order.
 *
 * Errors: isValid() is false where the encoder or the decoder is not there; put() and finish()
 *         return false if either refuses a picture.
 */
class CodecRoundTrip
{
public:
    /*! Gets the luma of a decoded picture and the index it was put in with. */
    using Decoded = std::function<void(const std::uint8_t *luma, int stride, std::int64_t index)>;

    struct Settings
    {
        std::string encoder; // libavcodec's names
        std::string decoder;
        int width;
        int height;
        int bitRate; // bit/s
        int frameRate;
        std::string options; // for the encoder, key=value:key=value
    };

    CodecRoundTrip(const Settings &settings, Decoded decoded);
    ~CodecRoundTrip();

    bool isValid() const { return m_valid; }
    bool put(const Picture &picture, std::int64_t index);
    bool finish();

    /*! Bytes that the encoder has made so far. */
    std::int64_t encodedBytes() const { return m_bytes; }

private:
    bool encode(const AVFrame *frame);
    bool decode(const AVPacket *packet);

    struct Free
    {
        void operator()(AVCodecContext *context) const;
        void operator()(AVFrame *frame) const;
        void operator()(AVPacket *packet) const;
    };
    Decoded m_decoded;
    std::unique_ptr<AVCodecContext, Free> m_encoder;
    std::unique_ptr<AVCodecContext, Free> m_decoder;
    std::unique_ptr<AVFrame, Free> m_input;
    std::unique_ptr<AVFrame, Free> m_output;
    std::unique_ptr<AVPacket, Free> m_packet;
    std::int64_t m_bytes = 0;
    bool m_valid = false;
};
