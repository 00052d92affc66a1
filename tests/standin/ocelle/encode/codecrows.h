// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "encodinglistener.h"

#include <localcodecmanager.h>
#include <ocelle/videoencoder.h>

#include <memory>

/*! Adds a test data row for each software encoder of this machine, with its "type". */
void addCodecRows();

/*! A software encoder of that kind that reports to \a listener. */
std::shared_ptr<Veltra::Ocelle::VideoEncoder> softwareEncoder(Veltra::Ocelle::CodecType type,
                                                              EncodingListener *listener);

/*! What to configure it with. */
Veltra::Ocelle::EncoderConfig encoderConfig(Veltra::Ocelle::CodecType type, int width, int height,
                                            int bitrate = 1000000);
