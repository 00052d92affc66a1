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

/*! What an encoder is configured with. */
struct EncoderConfig
{
    std::int32_t codecType;   // a CodecType
    std::int32_t width;       // pixels
    std::int32_t height;      // lines
    std::int32_t stride;      // bytes per line of the first plane
    std::int32_t sliceHeight; // lines per plane
    std::int32_t bitrate;     // bits per second
    std::int32_t frameRate;   // frames per second
};

/*! Parameters of an encoder, each carried as text. */
enum class VideoEncoderParameter : std::int32_t {
    UnknownParameter0 = 0,
    BitrateModeParameter = 1, // "constant" or "variable"
    RotationParameter = 2,    // degrees, decimal
    UnknownParameter3 = 3,
    MirrorVerticalParameter = 4, // "true" or "false"
};

/*!
 * Receives what an encoder puts out.
 *
 * Threads: called on threads of the library.
 */
class OCELLE_EXPORT VideoEncoderListener
{
public:
    virtual ~VideoEncoderListener();

    /*! One output unit; \a data is lent for the call, \a timestamp is the picture's. */
    virtual void onEncodedFrame(unsigned char *data, unsigned long size, unsigned long timestamp,
                                FrameType type) = 0;
    virtual void onEncoderParameterChanged(VideoEncoderParameter parameter,
                                           const std::string &value) = 0;
    virtual void onEncoderError(const std::string &message) = 0; // UTF-8
    virtual void onEncoderEOS() = 0;
};

/*!
 * One video encoder.
 *
 * Threads: operations one at a time; lockAndSetListener() from any thread.
 * Owner:   whoever holds the shared pointer from CodecManager::createVideoEncoder(). Nothing but
 *          dropping the last of them ends it. It may keep a picture after the call that brought it.
 * Errors:  false.
 *
 * The order of the virtual operations is a binary contract.
 */
class OCELLE_EXPORT VideoEncoder
{
public:
    virtual ~VideoEncoder();

    /*! True when the encoder is configured and running. */
    virtual bool initialize(EncoderConfig config) = 0;

    /*! False for a picture that is rejected. */
    virtual bool encode(std::shared_ptr<YCbCrFrame> frame, bool keyFrame) = 0;
    virtual bool setBitrate(int bitrate) = 0; // bits per second
    virtual bool setParameter(VideoEncoderParameter parameter, const std::string &value) = 0;
    virtual bool encodeRGB(std::shared_ptr<RGBFrame> frame, bool keyFrame) = 0;

    /*! Makes \a listener the one listener, not owned, under the encoder's own lock; null detaches. */
    void lockAndSetListener(VideoEncoderListener *listener);

protected:
    VideoEncoderListener *m_listener = nullptr;
    std::mutex m_listenerMutex; // guards m_listener
};

} // namespace Ocelle
} // namespace Veltra
