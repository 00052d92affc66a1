// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "decodersettings.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct AVBufferRef;
struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace Veltra {
namespace Ocelle {

/*! A decoder of libavcodec and the device it runs on. */
struct AvDecoderKind
{
    std::string codecName;   // libavcodec's
    std::string devicePath;  // of a VAAPI device; empty where there is none or it is found
    bool isReopened = false; // to discard what is inside, which it cannot do otherwise
};

/*!
 * A decoder through libavcodec: compressed frames in, pictures out in the order they are shown in.
 *
 * Threads: one at a time. libavcodec has up to four threads of its own.
 * Errors:  false and a text for people, without the codec's name.
 */
class AvDecoder
{
public:
    struct Picture
    {
        AVFrame *frame;     // in ordinary memory, to take or to leave
        std::int64_t index; // of the compressed frame, as given to decode()
        bool isDamaged;     // parts of it are made up
    };
    using PictureFunction = std::function<void(const Picture &)>;

    explicit AvDecoder(AvDecoderKind kind);
    ~AvDecoder();

    /*! Starts or starts anew. \a width and \a height are those expected, 0 where unknown. */
    bool open(const DecoderSettings &settings, int width, int height, std::string *error);
    void close();
    bool isOpen() const { return m_context != nullptr; }

    /*! Copies the next compressed frame, with the room behind it that the decoder needs. */
    bool load(const unsigned char *data, std::size_t size, std::string *error);
    const AVPacket &loaded() const { return *m_packet; }
    /*! Puts something before what is loaded. */
    bool prepend(const std::vector<std::uint8_t> &head, std::string *error);

    /*!
     * Decodes what is loaded and calls \a onPicture for what comes out. With \a reorders pictures
     * may come in another order than they are shown in. On false, some may have come out as well.
     */
    bool decode(std::int64_t index, bool reorders, const PictureFunction &onPicture,
                std::string *error);
    /*! Puts out what is still inside. A frame that refers to no other has to come next. */
    bool drain(const PictureFunction &onPicture, std::string *error);
    /*! Discards what is inside. A frame that refers to no other has to come next. */
    void flush();

    /*! Whether it lost its way over a frame that it refused: it takes no other before a flush(). */
    bool isStuck() const;

    /*! Whether the last picture was decoded by a device. */
    bool usesDevice() const { return m_usesDevice; }

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

    bool openCodec(std::string *error);
    bool openDevice(std::string *error);
    void configure();
    void setReordering(bool reorders);
    bool send(const AVPacket *packet, const PictureFunction &onPicture, std::string *error);
    bool receive(const PictureFunction &onPicture, std::string *error);
    bool put(const PictureFunction &onPicture, std::string *error);

    const AvDecoderKind m_kind;
    DecoderSettings m_settings; // as open() was told
    int m_width = 0;
    int m_height = 0;
    Owned<AVBufferRef> m_device;
    Owned<AVCodecContext> m_context;
    Owned<AVFrame> m_frame;
    Owned<AVFrame> m_deviceFrame; // brought here from a device
    Owned<AVPacket> m_packet;
    std::int64_t m_index = 0;  // of the last compressed frame
    bool m_hasPicture = false; // one came out since it was opened
    bool m_usesDevice = false;
};

} // namespace Ocelle
} // namespace Veltra
