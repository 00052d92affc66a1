// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>

#include <ocelle/codecmanager.h>

#include <string>

namespace Compliance {

/*! What a check is made on. */
struct Device
{
    enum class Kind {
        Cameras, // the camera manager
        Camera,
        Codecs, // the codec manager
        Encoder,
        Decoder,
    };

    Kind kind = Kind::Cameras;
    std::string id;                                                      // empty for a manager
    Veltra::Ocelle::CodecType type = Veltra::Ocelle::CodecType::Unknown; // of a codec
    int instances = 0; // of that kind of codec at once, as listed
};

constexpr int MostInstances = 64; // that are tried at once, however many are listed

/*! "h264" */
QString codecKindName(Veltra::Ocelle::CodecType type);

} // namespace Compliance
