// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <graphicbuffer.h>
#include <ocelle/videodecoder.h>
#include <rawpicture.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/*!
 * Keeps what a decoder puts out.
 *
 * Threads: one; the decoders under test call back on the thread that calls them.
 */
class DecodingListener : public Veltra::Ocelle::VideoDecoderListener
{
public:
    struct Rect
    {
        int x, y, width, height;
    };

    void onDecodedYCbCrFrame(const Veltra::Ocelle::YCbCrFrame *frame) override;
    void onDecodedGraphicBuffer(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer) override;
    void onDecoderParameterChanged(Veltra::Ocelle::VideoDecoderParameter parameter,
                                   const std::string &value) override;
    void onDecoderError(const std::string &message) override;
    void onDecoderEOS() override;

    const char *firstError() const { return errors.empty() ? "" : errors.front().c_str(); }

    bool keepsPictures = true; // else only buffers, timestamps and counts
    int pictures = 0;
    int ends = 0;
    std::vector<RawPicture> visible; // what is to be seen of each picture
    std::vector<std::shared_ptr<Veltra::Ocelle::GraphicBuffer>> buffers;
    bool keepsBuffers = false;
    std::vector<std::uint64_t> timestamps;
    std::vector<std::string> viewports;
    std::vector<std::string> errors;
    std::vector<std::string> calls;                 // kinds of calls, in order
    std::function<void()> onCall;                   // made within every call, if set
    std::function<void(const RawPicture &)> onView; // instead of keeping pictures, if set

private:
    void add(const Veltra::Ocelle::YCbCrFrame &frame);
    void called(const char *kind);

    Rect m_viewport {};
};
