// SPDX-License-Identifier: BSD-3-Clause
#include "readyencoder.h"

using Veltra::Ocelle::FrameType;
using Veltra::Ocelle::YCbCrFrame;

bool ReadyEncoder::encode(std::shared_ptr<YCbCrFrame> frame, bool keyFrame)
{
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (m_listener)
        m_listener->onEncodedFrame(m_unit.data(), m_unit.size(),
                                   static_cast<unsigned long>(frame->timestamp),
                                   keyFrame ? FrameType::Key : FrameType::Delta);
    return true;
}
