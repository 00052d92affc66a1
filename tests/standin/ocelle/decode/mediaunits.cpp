// SPDX-License-Identifier: BSD-3-Clause
#include "mediaunits.h"

extern "C" {
#include <libavformat/avformat.h>
}

std::vector<MediaUnit> readUnits(const std::string &path)
{
    std::vector<MediaUnit> units;
    AVFormatContext *container = nullptr;
    if (avformat_open_input(&container, path.c_str(), nullptr, nullptr) < 0)
        return units;
    AVPacket *packet = av_packet_alloc();
    while (av_read_frame(container, packet) >= 0) {
        units.push_back({ Bytes(packet->data, packet->data + packet->size),
                          std::int64_t(units.size()), (packet->flags & AV_PKT_FLAG_KEY) != 0 });
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
    avformat_close_input(&container);
    return units;
}
