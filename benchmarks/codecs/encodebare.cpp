// SPDX-License-Identifier: BSD-3-Clause
// The yardstick for encoding: raw pictures in a loop around a codec library's own calls, with the
// settings that the camera library gives it.
// Prints CPU time per picture (microseconds), its median time (milliseconds), peak memory (KB), and
// bytes put out.
//
// usage: bench-encodebare CODEC RAW WIDTH HEIGHT PICTURES [--paced]

#include "beat.h"
#include "codecmeter.h"
#include "encode/softwareencoderfactory.h"
#include "rawpictures.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace Veltra::Ocelle;

namespace {

std::unique_ptr<PictureEncoder> encoderFor(const char *codec)
{
    const CodecType type = !std::strcmp(codec, "h264")   ? CodecType::H264
                           : !std::strcmp(codec, "h265") ? CodecType::H265
                           : !std::strcmp(codec, "vp8")  ? CodecType::VP8
                           : !std::strcmp(codec, "vp9")  ? CodecType::VP9
                                                         : CodecType::Unknown;
    for (const auto &factory : SoftwareEncoderFactory::all()) {
        if (factory->info().type == type && factory->isAvailable())
            return factory->create();
    }
    return {};
}

bool run(PictureEncoder &encoder, const RawPictures &pictures, std::uint64_t count, bool paced,
         CodecMeter &meter)
{
    std::string error;
    for (std::uint64_t i = 0; i < count; ++i) {
        static Beat beat;
        if (paced)
            beat.wait();
        const PictureView view { PictureLayout::Planar, pictures.luma(i), pictures.cb(i),
                                 pictures.cr(i),        pictures.width(), pictures.width() / 2,
                                 pictures.width(),      pictures.height() };
        meter.begin(i);
        const auto take = [&](const EncodedUnit &unit) { meter.count(i, unit.size); };
        if (!encoder.encode(view, std::int64_t(i), false, take, &error)) {
            std::fprintf(stderr, "%s\n", error.c_str());
            return false;
        }
    }
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 6) {
        std::fprintf(stderr, "usage: bench-encodebare CODEC RAW WIDTH HEIGHT PICTURES [--paced]\n");
        return 2;
    }
    const RawPictures pictures(argv[2], std::atoi(argv[3]), std::atoi(argv[4]));
    const std::uint64_t count = std::strtoull(argv[5], nullptr, 10);
    const std::unique_ptr<PictureEncoder> encoder = encoderFor(argv[1]);
    EncoderSettings settings;
    settings.width = pictures.width();
    settings.height = pictures.height();
    settings.bitrate = 1000000;
    settings.constantBitrate = true;
    settings.threads = encoderThreads(settings.width, settings.height);
    std::string error = pictures.isEmpty() ? "no pictures" : "no such codec";
    if (pictures.isEmpty() || count < 2 || !encoder || !encoder->open(settings, &error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    CodecMeter meter(count);
    if (!run(*encoder, pictures, count, argc > 6 && !std::strcmp(argv[6], "--paced"), meter))
        return 1;
    meter.print();
    return 0;
}
