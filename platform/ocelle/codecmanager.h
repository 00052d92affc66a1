// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/global.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

class VideoDecoder;
class VideoEncoder;

/*! Kinds of codec; other values name kinds unknown here. */
enum class CodecType : std::int32_t {
    Unknown = 0,
    VP8 = 1,
    VP9 = 2,
    H264 = 3,
    H265 = 4,
};

/*! Kinds of compressed frame; only zero and non-zero are told apart. */
enum class FrameType : std::int32_t {
    Key = 0,
    Delta = 1,
};

/*! Describes one codec. */
struct VideoCodecInfo
{
    CodecType type;
    bool isEncoder;        // else a decoder
    std::string codecName; // id
    std::int32_t reserved;
    std::int32_t maxInstances; // how many may run at once
    bool isHardwareAccelerated;
};

/*!
 * The platform's video codecs.
 *
 * Owner:   the library, one per process; callers never delete it.
 * Threads: any thread, several at a time.
 * Errors:  an empty pointer where no codec can be had.
 *
 * The order of the virtual operations is a binary contract.
 */
class OCELLE_EXPORT CodecManager
{
public:
    virtual ~CodecManager();
    virtual bool prepare() = 0;
    virtual bool isEncoderSupported(CodecType type, bool flag) = 0;
    virtual bool isDecoderSupported(CodecType type, bool flag) = 0;
    virtual std::shared_ptr<VideoEncoder> createVideoEncoder(CodecType type, int flags) = 0;
    virtual std::shared_ptr<VideoDecoder> createVideoDecoder(CodecType type, int flags) = 0;

    /*! Every codec offered, encoders and decoders together. */
    virtual std::vector<VideoCodecInfo> getVideoCodecs() = 0;
};

} // namespace Ocelle
} // namespace Veltra

/*! The process-wide codec manager, owned by the library. */
extern "C" OCELLE_EXPORT Veltra::Ocelle::CodecManager *OcelleCodecManager();
