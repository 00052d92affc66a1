// SPDX-License-Identifier: BSD-3-Clause
#include <palaver/qpvmediaservicecodecinfointerface.h>

QPVMediaServiceCodecInfoInterface::~QPVMediaServiceCodecInfoInterface() = default;
