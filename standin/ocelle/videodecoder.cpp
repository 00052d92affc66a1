// SPDX-License-Identifier: BSD-3-Clause
// The parts of the decoder's interface that live in this library.

#include "listenercallscope.h"

#include <ocelle/videodecoder.h>

namespace Veltra {
namespace Ocelle {

VideoDecoderListener::~VideoDecoderListener() = default;

VideoDecoder::~VideoDecoder() = default;
void VideoDecoder::reserved4() {}

void VideoDecoder::lockAndSetListener(VideoDecoderListener *listener)
{
    if (ListenerCallScope::isActive(this)) { // from within a callback: this thread has the lock
        m_listener = listener;
        return;
    }
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    m_listener = listener;
}

} // namespace Ocelle
} // namespace Veltra
