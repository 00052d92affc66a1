// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <palaver/qpvglobal.h>

/*! Something that a QPVSource can feed. */
class PALAVER_EXPORT QPVSink
{
public:
    virtual ~QPVSink();
};
