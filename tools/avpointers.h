// SPDX-License-Identifier: BSD-3-Clause
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/bsf.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

#include <QString>

#include <memory>

namespace Tool {

/*! Frees what libav allocated. */
struct AvFree
{
    void operator()(AVBSFContext *filter) const { av_bsf_free(&filter); }
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
    void operator()(AVCodecParserContext *parser) const { av_parser_close(parser); }
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
    void operator()(SwsContext *scaler) const { sws_freeContext(scaler); }
};

template <typename Type>
using AvPointer = std::unique_ptr<Type, AvFree>;

/*! libav's words for one of its error codes. */
inline QString avErrorText(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromLocal8Bit(text);
}

/*! Why a file cannot be opened as a video. */
inline QString openErrorText(int code)
{
    const QString text = avErrorText(code);
    return code == AVERROR_INVALIDDATA
                   ? QStringLiteral("is no video that can be read (%1)").arg(text)
                   : text;
}

constexpr AVRational Microseconds { 1, 1000000 };

} // namespace Tool
