// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "decodefeeder.h"

#include <cstdint>
#include <vector>

/*! Writes the bits of a header, most significant first. */
class BitWriter
{
public:
    void bits(int count, std::uint64_t value);
    void number(std::uint32_t value);      // Exp-Golomb
    void signedNumber(std::int32_t value); // the same
    /*! A one and zeros up to a whole byte. */
    void finish();
    /*! With start code and \a header, kept free of other start codes. */
    Bytes unit(const Bytes &header) const;
    const Bytes &bytes() const { return m_bytes; }

private:
    Bytes m_bytes;
    int m_free = 0; // bits of the last byte
};

/*! What H.264 sequence parameters of a plain 4:2:0 stream say. */
struct SequenceWish
{
    std::uint32_t profile = 66;
    std::uint32_t constraints = 0;
    std::uint32_t width = 64; // multiples of 16
    std::uint32_t height = 64;
    std::uint32_t order = 0;
    bool allowsGaps = false;
    int reordered = -1; // pictures, as the usability information says; -1 for none
};
Bytes sequenceParameters(const SequenceWish &wish);

/*! A stream's units with usability information cut from its H.264 sequence parameters. */
std::vector<MediaUnit> withoutUsability(const std::vector<MediaUnit> &units);
