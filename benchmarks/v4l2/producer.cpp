// SPDX-License-Identifier: BSD-3-Clause
// Takes pictures of a V4L2 camera whose driver has each one ready at once, for a count of the
// instructions that one takes on its way through the source. usage: bench-producer WIDTHxHEIGHT PICTURES

#include "v4l2producer.h"

#include <linux/videodev2.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <memory>

using namespace Veltra::Ocelle;

namespace {

/*! A driver of NV12 that leaves its pictures as they are. */
class ReadyDriver final : public V4l2System
{
public:
    int open(const std::string &) override { return 0; }
    void close(int) override {}
    int ioctl(int, unsigned long request, void *argument) override
    {
        auto *const buffer = static_cast<v4l2_buffer *>(argument);
        switch (request) {
        case VIDIOC_S_FMT: {
            v4l2_pix_format &pixels = static_cast<v4l2_format *>(argument)->fmt.pix;
            pixels.bytesperline = pixels.width;
            m_length = pixels.width * pixels.height * 3 / 2;
            return 0;
        }
        case VIDIOC_QUERYBUF:
            buffer->length = m_length;
            return 0;
        case VIDIOC_QBUF:
            m_queued.push_back(buffer->index);
            return 0;
        case VIDIOC_DQBUF:
            buffer->index = m_queued.front();
            m_queued.pop_front();
            buffer->bytesused = m_length;
            buffer->sequence = m_sequence++;
            buffer->flags = V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
            return 0;
        case VIDIOC_S_PARM:
        case VIDIOC_REQBUFS:
        case VIDIOC_STREAMON:
        case VIDIOC_STREAMOFF:
            return 0;
        default:
            errno = EINVAL;
            return -1;
        }
    }
    void *map(int, std::size_t length, std::int64_t) override { return std::malloc(length); }
    void unmap(void *memory, std::size_t) override { std::free(memory); }
    Wait wait(int, int, std::chrono::milliseconds) override { return Wait::Ready; }

private:
    std::uint32_t m_length = 0; // bytes of a picture
    std::uint32_t m_sequence = 0;
    std::deque<std::uint32_t> m_queued;
};

} // namespace

int main(int argc, char *argv[])
{
    int width = 0;
    int height = 0;
    const int pictures = argc == 3 ? std::atoi(argv[2]) : 0;
    if (pictures < 1 || std::sscanf(argv[1], "%dx%d", &width, &height) != 2) {
        std::fprintf(stderr, "usage: bench-producer WIDTHxHEIGHT PICTURES\n");
        return 2;
    }
    V4l2Producer producer(
            std::make_shared<ReadyDriver>(),
            { "ready", "Ready", "/dev/null", { V4L2_PIX_FMT_NV12, width, height, { 1, 30 }, 30 } },
            {});
    const std::atomic<bool> stop { false };
    for (int i = 0; i < pictures; ++i) {
        if (!producer.next(stop) || !producer.picture(std::uint64_t(i), 0)) {
            std::fprintf(stderr, "picture %d did not come: %s\n", i, producer.error().c_str());
            return 1;
        }
    }
    return 0;
}
