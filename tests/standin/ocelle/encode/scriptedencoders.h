// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <encoderfactory.h>
#include <ocelle/codecmanager.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/*!
 * Stands for a codec library: its codecs do as told and write down what they are asked.
 *
 * Threads: one.
 */
class ScriptedEncoders : public Veltra::Ocelle::EncoderFactory
{
public:
    ScriptedEncoders(Veltra::Ocelle::CodecType type, const std::string &name,
                     bool isHardware = false, int mostInstances = 4);

    bool isAvailable() override;
    std::unique_ptr<Veltra::Ocelle::PictureEncoder> create() override;

    // What it does
    bool available = true;
    std::string openError; // fails with that text unless empty
    std::string encodeError;
    std::string bitrateError;
    bool reopensForBitrate = false;
    int delay = 0; // pictures held back

    // What it was asked
    int availableCalls = 0;
    int alive = 0; // codecs
    std::vector<Veltra::Ocelle::EncoderSettings> opened;
    std::vector<int> bitrates;
    std::vector<bool> keyFrames; // of each picture
    int finished = 0;
};
