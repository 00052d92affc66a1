// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/*! One compressed frame of a file. */
struct MediaUnit
{
    Bytes data;
    std::int64_t number; // of the frame in the order of showing, or of the file where unknown
    bool isKey;
};

/*! The compressed frames of a file in the order of decoding; none where it cannot be read. */
std::vector<MediaUnit> readUnits(const std::string &path);
