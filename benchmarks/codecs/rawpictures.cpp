// SPDX-License-Identifier: BSD-3-Clause
#include "rawpictures.h"

#include <cstdio>
#include <memory>

RawPictures::RawPictures(const std::string &file, int width, int height)
    : m_width(width)
    , m_height(height)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> input(std::fopen(file.c_str(), "rb"),
                                                                 std::fclose);
    std::size_t got = 0;
    do {
        m_memory.resize(got + size());
        got += input ? std::fread(m_memory.data() + got, 1, size(), input.get()) : 0;
    } while (got == m_memory.size());
    m_memory.resize(got / size() * size());
}

std::size_t RawPictures::size() const
{
    return std::size_t(m_width) * std::size_t(m_height) * 3 / 2;
}

const std::uint8_t *RawPictures::luma(std::size_t index) const
{
    return m_memory.data() + index % count() * size();
}

const std::uint8_t *RawPictures::cb(std::size_t index) const
{
    return luma(index) + std::size_t(m_width) * std::size_t(m_height);
}

const std::uint8_t *RawPictures::cr(std::size_t index) const
{
    return cb(index) + std::size_t(m_width) * std::size_t(m_height) / 4;
}
