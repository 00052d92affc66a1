// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>

#include <ocelle/codecmanager.h>

namespace Compliance {

class Session;

/*! Whether the platform says that it has such an encoder or decoder, whatever the flag. */
bool isPromised(Session &session, Veltra::Ocelle::CodecType type, bool encoder);

/*! Whether it lists one. */
bool isListed(Session &session, Veltra::Ocelle::CodecType type, bool encoder);

/*! "at once: 2", and of how many where not all that are listed were tried. */
QString atOnce(int tried, int listed);

} // namespace Compliance
