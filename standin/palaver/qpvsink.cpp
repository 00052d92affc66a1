// SPDX-License-Identifier: BSD-3-Clause
#include <palaver/qpvsink.h>

QPVSink::~QPVSink() = default;
