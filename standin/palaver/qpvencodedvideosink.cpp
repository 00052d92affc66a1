// SPDX-License-Identifier: BSD-3-Clause
#include <palaver/qpvencodedvideosink.h>

QPVEncodedVideoSink::~QPVEncodedVideoSink() = default;
