// SPDX-License-Identifier: BSD-3-Clause
#include <palaver/qpvsource.h>

QPVSource::~QPVSource() = default;

void QPVSource::sinkActiveChanged(QPVSink *, bool) {}

void QPVSource::sinkError(QPVSink *) {}
