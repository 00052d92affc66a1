// SPDX-License-Identifier: BSD-3-Clause
// Compressed frames, whatever they are, through a decoder. The first byte says which and how; of
// each frame two bytes tell the length, of which the uppermost bit stands for a flush after it.
#include "graphicbuffer.h"
#include "localvideodecoder.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

using namespace Veltra::Ocelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {
class Listener : public VideoDecoderListener
{
public:
    void onDecodedYCbCrFrame(const YCbCrFrame *frame) override
    {
        touch(frame->y, frame->yStride, frame->height, frame->width);
        touch(frame->cb, frame->cStride, (frame->height + 1) / 2, (frame->width + 1) / 2);
        touch(frame->cr, frame->cStride, (frame->height + 1) / 2, (frame->width + 1) / 2);
    }
    void onDecodedGraphicBuffer(std::shared_ptr<GraphicBuffer> buffer) override
    {
        for (int i = 0; i < buffer->planeCount; ++i) {
            const GraphicBuffer::Plane &plane = buffer->planes[std::size_t(i)];
            const bool isHalf = i > 0 && buffer->planeCount == 3;
            touch(plane.data, plane.stride, plane.lines,
                  isHalf ? (buffer->width + 1) / 2 : buffer->width);
        }
    }
    void onDecoderParameterChanged(VideoDecoderParameter, const std::string &) override {}
    void onDecoderError(const std::string &message) override
    {
        if (message.empty())
            std::abort();
    }
    void onDecoderEOS() override {}

    unsigned sum = 0;

private:
    // The ends of each line, so that one which is not there is found.
    void touch(const std::uint8_t *plane, int stride, int lines, int width)
    {
        for (int line = 0; line < lines; ++line) {
            const std::uint8_t *const start = plane + std::ptrdiff_t(line) * stride;
            sum += start[0] + unsigned(start[width - 1]);
        }
    }
};

struct Block
{
    std::uint8_t *memory;
    int releases;
};

void release(void *argument)
{
    auto *const block = static_cast<Block *>(argument);
    if (block->releases++ == 0)
        std::free(block->memory);
}

std::shared_ptr<LocalVideoDecoder> decoderFor(unsigned choice)
{
    constexpr std::int64_t smallPicture = 256 * 256; // pixels: large ones take too long
    const CodecType types[] = { CodecType::H264, CodecType::H265, CodecType::VP8, CodecType::VP9 };
    const char *const names[] = { "h264", "hevc", "vp8", "vp9" };
    const unsigned which = choice & 3;
    DecoderSettings settings;
    settings.output = choice & 4 ? DecoderOutput::YCbCr : DecoderOutput::Buffer;
    settings.threads = choice & 8 ? DecoderThreads::Throughput : DecoderThreads::LowDelay;
    settings.maxPixels = smallPicture;
    auto decoder = std::make_shared<LocalVideoDecoder>(types[which], names[which],
                                                       AvDecoderKind { names[which], {}, false },
                                                       settings, std::make_shared<int>());
    if (!decoder->initialize({ types[which], 0, 0, 30, { 0, 0 } }))
        std::abort();
    return decoder;
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr std::size_t lengthSize = 2; // bytes
    if (size == 0)
        return 0;
    Listener listener;
    const auto decoder = decoderFor(data[0]);
    decoder->lockAndSetListener(&listener);
    for (std::size_t at = 1; at + lengthSize < size;) {
        const unsigned field = data[at] | unsigned(data[at + 1]) << 8;
        at += lengthSize;
        const std::size_t length = std::min<std::size_t>(field & 0x7fff, size - at);
        // Exact sizes, so that a byte too many is found.
        Block block { static_cast<std::uint8_t *>(std::malloc(length)), 0 };
        std::memcpy(block.memory, data + at, length);
        decoder->decode(block.memory, length, at, FrameType::Key, release, &block);
        if (block.releases != 1)
            std::abort();
        if (field & 0x8000)
            decoder->flush();
        at += length;
    }
    decoder->drain();
    decoder->stop();
    decoder->lockAndSetListener(nullptr);
    return 0;
}
