// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <palaver/qpvglobal.h>
#include <palaver/qpvsink.h>

class QPVEncodedVideoFrame;
class QVideoEncoderSettings;

/*!
 * Takes compressed video.
 *
 * Threads: present() on threads of the camera library, the rest on the application thread; never
 *          two calls at a time.
 */
class PALAVER_EXPORT QPVEncodedVideoSink : public QPVSink
{
public:
    ~QPVEncodedVideoSink() override;

    virtual void release() = 0; // replaced by another sink, after stop()
    virtual bool isFormatSupported(const QVideoEncoderSettings &settings) = 0;
    virtual bool start(const QVideoEncoderSettings &settings) = 0;
    virtual void present(const QPVEncodedVideoFrame &frame) = 0;
    virtual void finish() = 0; // the encoder has unloaded; stop() follows
    virtual void stop() = 0;
};
