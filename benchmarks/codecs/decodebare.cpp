// SPDX-License-Identifier: BSD-3-Clause
// The yardstick for decoding: compressed pictures in a loop around libavcodec's own calls, with as
// many threads as the camera library's decoders have. Prints what bench-decode does; the times are
// those from a unit to its picture, and from opening the codec to the first one.
//
// usage: bench-decodebare CODEC FILE PICTURES [--paced]

#include "beat.h"
#include "codecmeter.h"
#include "encodedstream.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace {

class Loop
{
public:
    Loop(const EncodedStream &stream, std::uint64_t pictures)
        : m_stream(stream)
        , m_pictures(pictures)
        , m_meter(pictures)
    {
    }
    ~Loop()
    {
        av_frame_free(&m_frame);
        avcodec_free_context(&m_context);
    }
    Loop(const Loop &) = delete;
    Loop &operator=(const Loop &) = delete;

    bool open(const std::string &codec)
    {
        m_meter.start();
        const AVCodec *const decoder =
                avcodec_find_decoder_by_name(codec == "h265" ? "hevc" : codec.c_str());
        m_context = avcodec_alloc_context3(decoder);
        m_frame = av_frame_alloc();
        if (!decoder || !m_context || !m_frame)
            return false;
        setThreads();
        return avcodec_open2(m_context, decoder, nullptr) == 0;
    }

    bool run(bool paced)
    {
        Beat beat;
        for (std::uint64_t i = 0; i < m_pictures; ++i) {
            if (paced)
                beat.wait();
            m_meter.begin(i);
            if (avcodec_send_packet(m_context, m_stream.unit(i)) < 0)
                return false;
            receive();
        }
        avcodec_send_packet(m_context, nullptr);
        receive();
        return m_out == m_pictures;
    }

    void print() { m_meter.printWithFirst(); }

private:
    void setThreads()
    {
        const char *const threads = std::getenv("OCELLE_DECODER_THREADS");
        if (threads && !std::strcmp(threads, "throughput")) {
            m_context->thread_type = FF_THREAD_FRAME;
            m_context->thread_count = std::clamp(int(std::thread::hardware_concurrency()), 2, 4);
        } else {
            m_context->thread_type = FF_THREAD_SLICE;
            m_context->thread_count = 1; // as up to 1280x720
            m_context->flags |= AV_CODEC_FLAG_LOW_DELAY;
        }
    }

    void receive()
    {
        while (avcodec_receive_frame(m_context, m_frame) == 0) {
            m_meter.count(m_out++, 0);
            av_frame_unref(m_frame);
        }
    }

    const EncodedStream &m_stream;
    const std::uint64_t m_pictures;
    std::uint64_t m_out = 0; // pictures
    CodecMeter m_meter;
    AVCodecContext *m_context = nullptr; // owned
    AVFrame *m_frame = nullptr;          // owned
};

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 4) {
        std::fprintf(stderr, "usage: bench-decodebare CODEC FILE PICTURES [--paced]\n");
        return 2;
    }
    const EncodedStream stream(argv[2]);
    const std::uint64_t pictures = std::strtoull(argv[3], nullptr, 10);
    if (stream.isEmpty() || pictures < 2)
        return 1;
    Loop loop(stream, pictures);
    if (!loop.open(argv[1]) || !loop.run(argc > 4 && !std::strcmp(argv[4], "--paced"))) {
        std::fprintf(stderr, "%s does not decode %s\n", argv[1], argv[2]);
        return 1;
    }
    loop.print();
    return 0;
}
