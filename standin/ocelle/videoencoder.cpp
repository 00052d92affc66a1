// SPDX-License-Identifier: BSD-3-Clause
// The parts of the encoder's interface that live in this library.

#include "listenercallscope.h"

#include <ocelle/videoencoder.h>

namespace Veltra {
namespace Ocelle {

VideoEncoderListener::~VideoEncoderListener() = default;

VideoEncoder::~VideoEncoder() = default;

void VideoEncoder::lockAndSetListener(VideoEncoderListener *listener)
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
