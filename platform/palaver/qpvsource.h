// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <palaver/qpvglobal.h>

class QPVSink;

/*! Something that feeds sinks, which are borrowed. */
class PALAVER_EXPORT QPVSource
{
public:
    virtual ~QPVSource();
    virtual bool addSink(QPVSink *sink) = 0;
    virtual bool removeSink(QPVSink *sink) = 0;
    virtual void sinkActiveChanged(QPVSink *sink, bool active);
    virtual void sinkError(QPVSink *sink);
};
