// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/codecmanager.h>
#include <ocelle/frames.h>
#include <ocelle/global.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace Veltra {
namespace Ocelle {

/*! What a decoder is configured with. */
struct DecoderConfig
{
    CodecType codecType;
    std::int32_t width;        // of the stream, pixels
    std::int32_t height;       // of the stream, lines
    std::int32_t frameRate;    // frames per second
    std::uint64_t reserved[2]; // zero
};

/*! Parameters that a decoder reports, each carried as text. */
enum class VideoDecoderParameter : std::int32_t {
    UnknownParameter0 = 0,
    ViewportParameter = 1, // the visible part of the picture, pixels: "(x,y,width,height)"
};

/*!
 * Receives what a decoder puts out.
 *
 * Threads: called on threads of the library.
 */
class OCELLE_EXPORT VideoDecoderListener
{
public:
    virtual ~VideoDecoderListener();

    /*! \a frame is valid only during the call. */
    virtual void onDecodedYCbCrFrame(const YCbCrFrame *frame) = 0;
    virtual void onDecodedGraphicBuffer(std::shared_ptr<GraphicBuffer> buffer) = 0;
    virtual void onDecoderParameterChanged(VideoDecoderParameter parameter,
                                           const std::string &value) = 0;
    virtual void onDecoderError(const std::string &message) = 0; // UTF-8
    virtual void onDecoderEOS() = 0;
};

/*!
 * One video decoder.
 *
 * Threads: operations one at a time; lockAndSetListener() from any thread.
 * Owner:   whoever holds the shared pointer from CodecManager::createVideoDecoder().
 * Errors:  false.
 *
 * The order of the virtual operations is a binary contract.
 */
class OCELLE_EXPORT VideoDecoder
{
public:
    virtual ~VideoDecoder();

    /*! True when the decoder is configured and ready for frames. */
    virtual bool initialize(DecoderConfig config) = 0;
    virtual void reserved4();

    /*!
     * Takes \a size bytes at \a data and calls \a release with \a releaseArg once it no longer
     * needs them, also where it refuses the frame, which false tells.
     */
    virtual bool decode(const unsigned char *data, std::uint64_t size, std::uint64_t timestamp,
                        FrameType type, void (*release)(void *), void *releaseArg) = 0;
    virtual void flush() = 0; // discards what is inside
    virtual void drain() = 0; // puts out what is inside
    virtual void stop() = 0;  // the last call

    /*! Makes \a listener the one listener, not owned, under the decoder's own lock; null detaches. */
    void lockAndSetListener(VideoDecoderListener *listener);

protected:
    VideoDecoderListener *m_listener = nullptr;
    std::mutex m_listenerMutex; // guards m_listener
};

} // namespace Ocelle
} // namespace Veltra
