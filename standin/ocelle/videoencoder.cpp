// The parts of the encoder's interface that live in this library.

#include <ocelle/videoencoder.h>

namespace Veltra {
namespace Ocelle {

VideoEncoderListener::~VideoEncoderListener() = default;

VideoEncoder::~VideoEncoder() = default;

void VideoEncoder::lockAndSetListener(VideoEncoderListener *listener)
{
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    m_listener = listener;
}

} // namespace Ocelle
} // namespace Veltra
