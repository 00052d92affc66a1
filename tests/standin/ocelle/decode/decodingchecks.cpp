// SPDX-License-Identifier: BSD-3-Clause
#include "decodingchecks.h"

#include <patternreader.h>

#include <algorithm>

using namespace Veltra::Ocelle;

std::vector<int> numbers(const std::vector<RawPicture> &pictures)
{
    std::vector<int> result;
    for (const RawPicture &picture : pictures) {
        const auto reading =
                readPattern(picture.y.data(), picture.width, picture.width, picture.height);
        result.push_back(reading ? int(reading->sequence) : -1);
    }
    return result;
}

std::vector<int> range(int from, int to)
{
    std::vector<int> result;
    for (int number = from; number < to; ++number)
        result.push_back(number);
    return result;
}

bool isEqual(const RawPicture &one, const RawPicture &other)
{
    return one.width == other.width && one.height == other.height && one.y == other.y &&
           one.cb == other.cb && one.cr == other.cr;
}

bool isEqual(const std::vector<RawPicture> &one, const std::vector<RawPicture> &other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](const RawPicture &a, const RawPicture &b) { return isEqual(a, b); });
}

DecodingListener decoded(const DecoderWish &wish, const std::vector<MediaUnit> &units)
{
    DecodingListener listener;
    const auto decoder = softwareDecoder(wish, &listener);
    DecodeFeeder feeder(decoder);
    for (const MediaUnit &unit : units)
        feeder.decode(unit.data, std::uint64_t(unit.number));
    decoder->drain();
    decoder->stop();
    decoder->lockAndSetListener(nullptr);
    if (!feeder.isAllReleasedOnce())
        listener.errors.emplace_back("a block was not given back once");
    return listener;
}
