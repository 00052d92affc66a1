// SPDX-License-Identifier: BSD-3-Clause
#include "encodinglistener.h"

using namespace Veltra::Ocelle;

void EncodingListener::onEncodedFrame(unsigned char *data, unsigned long size,
                                      unsigned long timestamp, FrameType type)
{
    units.push_back({ { data, data + size }, timestamp, type });
    if (onCall)
        onCall();
}

void EncodingListener::onEncoderParameterChanged(VideoEncoderParameter, const std::string &)
{
    ++otherCalls;
}

void EncodingListener::onEncoderError(const std::string &message)
{
    errors.push_back(message);
    if (onCall)
        onCall();
}

void EncodingListener::onEncoderEOS()
{
    ++otherCalls;
}

std::vector<int> EncodingListener::keyFrames() const
{
    std::vector<int> indices;
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (units[i].type == FrameType::Key)
            indices.push_back(int(i));
    }
    return indices;
}

double EncodingListener::bitrate(std::size_t from, std::size_t to, int frameRate) const
{
    double bits = 0;
    for (std::size_t i = from; i < to && i < units.size(); ++i)
        bits += 8.0 * double(units[i].data.size());
    return bits * frameRate / double(to - from);
}
