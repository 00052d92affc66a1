// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "mediaunits.h"

#include <ocelle/codecmanager.h>

#include <string>
#include <utility>
#include <vector>

/*! How to make a stream of numbered test pictures with an encoder of libavcodec. */
struct StreamWish
{
    Veltra::Ocelle::CodecType type;
    int width = 320;
    int height = 240;
    int pictures = 20;
    int keyDistance = 10;                                        // pictures
    int bFrames = 0;                                             // at most so many in a row
    std::string layout = "yuv420p";                              // libav's name
    std::vector<std::pair<std::string, std::string>> options {}; // of the encoder
    int firstNumber = 0;                                         // in the first picture
    bool isStill = false;                                        // all pictures are the first
};

/*!
 * The stream in the order of decoding, its units numbered as the pictures are; none where this
 * machine has no such encoder.
 */
std::vector<MediaUnit> encodedStream(const StreamWish &wish);

/*! The units with another cropping, by a filter of libavcodec with options such as "crop_left=4". */
std::vector<MediaUnit> filtered(const std::vector<MediaUnit> &units, Veltra::Ocelle::CodecType type,
                                const std::string &filter);

/*! Adds a test data row for each kind of codec, with its "type". */
void addDecoderRows();
