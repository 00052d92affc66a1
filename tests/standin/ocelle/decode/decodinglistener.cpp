// SPDX-License-Identifier: BSD-3-Clause
#include "decodinglistener.h"

#include <cstdio>

using namespace Veltra::Ocelle;

void DecodingListener::onDecodedYCbCrFrame(const YCbCrFrame *frame)
{
    add(*frame);
    called("frame");
}

void DecodingListener::onDecodedGraphicBuffer(std::shared_ptr<GraphicBuffer> buffer)
{
    const bool isPlanar = buffer->planeCount == 3;
    YCbCrFrame frame {};
    frame.y = buffer->planes[0].data;
    frame.cb = buffer->planes[1].data;
    frame.cr = isPlanar ? buffer->planes[2].data : frame.cb + 1;
    frame.yStride = std::uint16_t(buffer->planes[0].stride);
    frame.cStride = std::uint16_t(buffer->planes[1].stride);
    frame.chromaStep = isPlanar ? 1 : 2;
    frame.width = std::uint16_t(buffer->width);
    frame.height = std::uint16_t(buffer->height);
    frame.timestamp = buffer->timestamp;
    add(frame);
    if (keepsBuffers)
        buffers.push_back(std::move(buffer));
    called("buffer");
}

void DecodingListener::onDecoderParameterChanged(VideoDecoderParameter parameter,
                                                 const std::string &value)
{
    if (parameter == VideoDecoderParameter::ViewportParameter) {
        viewports.push_back(value);
        std::sscanf(value.c_str(), "(%d,%d,%d,%d)", &m_viewport.x, &m_viewport.y, &m_viewport.width,
                    &m_viewport.height);
    }
    called("parameter");
}

void DecodingListener::onDecoderError(const std::string &message)
{
    errors.push_back(message);
    called("error");
}

void DecodingListener::onDecoderEOS()
{
    ++ends;
    called("end");
}

// Copies what is within the viewport.
void DecodingListener::add(const YCbCrFrame &frame)
{
    ++pictures;
    timestamps.push_back(std::uint64_t(frame.timestamp));
    if (!keepsPictures && !onView)
        return;
    const Rect view = m_viewport.width > 0 ? m_viewport : Rect { 0, 0, frame.width, frame.height };
    if (view.x + view.width > frame.width || view.y + view.height > frame.height) {
        errors.push_back("a viewport beyond the picture");
        return;
    }
    RawPicture picture(view.width, view.height);
    for (int row = 0; row < view.height; ++row) {
        for (int column = 0; column < view.width; ++column)
            picture.y[std::size_t(row) * std::size_t(view.width) + std::size_t(column)] =
                    frame.y[(view.y + row) * frame.yStride + view.x + column];
    }
    const auto width = std::size_t(picture.chromaWidth());
    for (int row = 0; row < picture.chromaHeight(); ++row) {
        for (int column = 0; column < picture.chromaWidth(); ++column) {
            const int from =
                    (view.y / 2 + row) * frame.cStride + (view.x / 2 + column) * frame.chromaStep;
            picture.cb[std::size_t(row) * width + std::size_t(column)] = frame.cb[from];
            picture.cr[std::size_t(row) * width + std::size_t(column)] = frame.cr[from];
        }
    }
    if (onView)
        onView(picture);
    else
        visible.push_back(std::move(picture));
}

void DecodingListener::called(const char *kind)
{
    calls.emplace_back(kind);
    if (onCall)
        onCall();
}
