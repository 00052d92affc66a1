// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "rawpicture.h"

#include <ocelle/codecmanager.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;

/*!
 * Decodes compressed pictures, or the video of a file, with libavcodec.
 *
 * Errors: isValid() is false without the decoder; what cannot be decoded gives no picture.
 */
class UnitDecoder
{
public:
    explicit UnitDecoder(Veltra::Ocelle::CodecType type);
    /*! By libavcodec's name. */
    explicit UnitDecoder(const std::string &name);
    ~UnitDecoder();

    bool isValid() const { return m_context != nullptr; }

    /*! What comes out once \a unit is in. */
    std::vector<RawPicture> decode(const std::vector<std::uint8_t> &unit);
    /*! What is still inside. */
    std::vector<RawPicture> finish();

    /*! The first \a most pictures of a file, scaled to that size; none where it is absent. */
    static std::vector<RawPicture> play(const std::string &path, int width, int height, int most);

private:
    struct Free
    {
        void operator()(AVCodecContext *context) const;
        void operator()(AVFrame *frame) const;
        void operator()(AVPacket *packet) const;
    };
    std::vector<RawPicture> send(AVPacket *packet);

    std::unique_ptr<AVCodecContext, Free> m_context;
    std::unique_ptr<AVFrame, Free> m_frame;
    std::unique_ptr<AVPacket, Free> m_packet;
};
