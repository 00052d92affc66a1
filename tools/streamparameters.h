// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "videocodec.h"

#include <QByteArray>
#include <QSize>

struct AVCodecParameters;

namespace Tool {

/*!
 * Describes a stream for a container, from its first unit: a key frame, for H.264 and H.265 with
 * the parameter sets in front of it, which containers want apart.
 *
 * \a size is that of the pictures, where the unit does not say it itself.
 *
 * Errors: false, and \a error says what is missing.
 */
bool describeStream(VideoCodec codec, const QByteArray &unit, QSize size,
                    AVCodecParameters *parameters, QString *error);

} // namespace Tool
