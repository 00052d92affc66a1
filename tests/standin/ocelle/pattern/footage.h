// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <functional>
#include <string>

/*! Decodes the first video stream of the file \a path; hands on each picture's luma. */
class Footage
{
public:
    using Decoded =
            std::function<void(const std::uint8_t *luma, int stride, int width, int height)>;

    /*! How many pictures there were; -1 if the file cannot be read. */
    static int play(const std::string &path, const Decoded &decoded);
};
