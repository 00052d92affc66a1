// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ocellemappedframe.h"

#include <ocelle/frames.h>

/*!
 * A picture of any format but RGB32 as the platform's encoder takes it: refers to the planes of the
 * mapped picture, and keeps that until the encoder drops this.
 *
 * Threads: built on the worker thread, destroyed on any.
 * Units:   sizes and strides are cut to 16 bits; time in microseconds.
 * Errors:  where the planes cannot be had, or reading them would leave their memory, the pointers
 *          are null, which the encoder refuses.
 */
class OcelleInputFrame : public Veltra::Ocelle::YCbCrFrame
{
public:
    explicit OcelleInputFrame(const QVideoFrame &frame);

    const QVideoFrame &frame() const { return m_mapped.frame(); }

private:
    bool isReadable() const;

    const OcelleMappedFrame m_mapped;
};
