// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "pictureencoder.h"

#include <memory>
#include <string>

struct AVBufferRef;
struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace Veltra {
namespace Ocelle {

/*! An encoder of libavcodec and the device it runs on. */
struct AvEncoderKind
{
    std::string codecName;  // libavcodec's
    std::string devicePath; // of a VAAPI device; empty where the encoder finds its own
};

/*!
 * An encoder through libavcodec, which is how hardware is reached. Pictures are copied once, into
 * the device's memory or the encoder's. Some put out a picture only after later ones. A changed bit
 * rate takes a new open().
 *
 * Threads: one at a time.
 */
class AvEncoder final : public PictureEncoder
{
public:
    explicit AvEncoder(AvEncoderKind kind);
    ~AvEncoder() override;

    bool takes(PictureLayout layout) const override { return layout != PictureLayout::NV21; }
    bool takesOddSizes() const override { return false; }
    bool open(const EncoderSettings &settings, std::string *error) override;
    bool encode(const PictureView &picture, std::int64_t index, bool keyFrame,
                const UnitFunction &onUnit, std::string *error) override;
    bool finish(const UnitFunction &onUnit, std::string *error) override;
    BitrateChange setBitrate(int, std::string *) override { return BitrateChange::NeedsReopen; }

private:
    struct Free
    {
        void operator()(AVBufferRef *buffer) const;
        void operator()(AVCodecContext *context) const;
        void operator()(AVFrame *frame) const;
        void operator()(AVPacket *packet) const;
    };
    template <class Type>
    using Owned = std::unique_ptr<Type, Free>;

    bool openWith(int format, const EncoderSettings &settings, std::string *error);
    bool openDevice(std::string *error);
    bool makeDevicePictures(std::string *error);
    bool fill(const PictureView &picture, std::string *error);
    bool send(const AVFrame *frame, const UnitFunction &onUnit, std::string *error);
    bool receive(const UnitFunction &onUnit, std::string *error);

    const AvEncoderKind m_kind;
    Owned<AVBufferRef> m_device;
    Owned<AVCodecContext> m_context;
    Owned<AVFrame> m_picture;       // in ordinary memory
    Owned<AVFrame> m_devicePicture; // where the device has its own
    Owned<AVPacket> m_packet;
};

} // namespace Ocelle
} // namespace Veltra
