// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ocellemappedframe.h"

#include <ocelle/frames.h>

/*!
 * A picture of format RGB32 as the platform's encoder takes it: refers to the mapped picture, and
 * keeps that until the encoder drops this.
 *
 * Threads: built on the worker thread, destroyed on any.
 * Units:   sizes and the stride are cut to 16 bits; time in microseconds.
 * Errors:  where the picture cannot be had, or reading it would leave its memory, the pointer is
 *          null, which the encoder refuses.
 */
class OcelleInputRGBFrame : public Veltra::Ocelle::RGBFrame
{
public:
    explicit OcelleInputRGBFrame(const QVideoFrame &frame);

    const QVideoFrame &frame() const { return m_mapped.frame(); }

private:
    const OcelleMappedFrame m_mapped;
};
