// SPDX-License-Identifier: BSD-3-Clause
#include "streamparameters.h"

#include "avpointers.h"

#include <cstring>

namespace Tool {
namespace {

AVCodecID codecId(VideoCodec codec)
{
    switch (codec) {
    case VideoCodec::H264:
        return AV_CODEC_ID_H264;
    case VideoCodec::H265:
        return AV_CODEC_ID_HEVC;
    case VideoCodec::VP8:
        return AV_CODEC_ID_VP8;
    case VideoCodec::VP9:
        return AV_CODEC_ID_VP9;
    }
    return AV_CODEC_ID_NONE;
}

/*! A packet with a copy of \a unit, as libav's readers want it padded. */
AvPointer<AVPacket> packetOf(const QByteArray &unit)
{
    AvPointer<AVPacket> packet(av_packet_alloc());
    if (!packet || av_new_packet(packet.get(), unit.size()) < 0)
        return nullptr;
    std::memcpy(packet->data, unit.constData(), static_cast<std::size_t>(unit.size()));
    return packet;
}

/*! The parameter sets in front of a key frame, for the container to convert to its own form. */
bool takeParameterSets(const QByteArray &unit, AVCodecParameters *parameters)
{
    AVBSFContext *made = nullptr;
    if (av_bsf_alloc(av_bsf_get_by_name("extract_extradata"), &made) < 0)
        return false;
    const AvPointer<AVBSFContext> filter(made);
    const AvPointer<AVPacket> packet = packetOf(unit);
    if (!packet || avcodec_parameters_copy(filter->par_in, parameters) < 0 ||
        av_bsf_init(filter.get()) < 0 || av_bsf_send_packet(filter.get(), packet.get()) < 0 ||
        av_bsf_receive_packet(filter.get(), packet.get()) < 0)
        return false;
    std::size_t size = 0;
    const std::uint8_t *sets =
            av_packet_get_side_data(packet.get(), AV_PKT_DATA_NEW_EXTRADATA, &size);
    if (!sets || size == 0)
        return false;
    parameters->extradata =
            static_cast<std::uint8_t *>(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!parameters->extradata)
        return false;
    std::memcpy(parameters->extradata, sets, size);
    parameters->extradata_size = static_cast<int>(size);
    return true;
}

/*! Where the parameter sets tell the size, it is that: the codec may have rounded it. */
void readSize(const QByteArray &unit, AVCodecParameters *parameters)
{
    const AvPointer<AVCodecParserContext> parser(av_parser_init(parameters->codec_id));
    const AvPointer<AVCodecContext> context(avcodec_alloc_context3(nullptr));
    const AvPointer<AVPacket> packet = packetOf(unit);
    if (!parser || !context || !packet)
        return;
    parser->flags |= PARSER_FLAG_COMPLETE_FRAMES;
    std::uint8_t *parsed = nullptr;
    int parsedSize = 0;
    av_parser_parse2(parser.get(), context.get(), &parsed, &parsedSize, packet->data, packet->size,
                     AV_NOPTS_VALUE, AV_NOPTS_VALUE, 0);
    if (parser->width > 0 && parser->height > 0) {
        parameters->width = parser->width;
        parameters->height = parser->height;
    }
}

} // namespace

bool describeStream(VideoCodec codec, const QByteArray &unit, QSize size,
                    AVCodecParameters *parameters, QString *error)
{
    parameters->codec_type = AVMEDIA_TYPE_VIDEO;
    parameters->codec_id = codecId(codec);
    parameters->width = size.width();
    parameters->height = size.height();
    parameters->format = AV_PIX_FMT_YUV420P;
    if (codec == VideoCodec::VP9)
        parameters->profile = FF_PROFILE_VP9_0;
    if (codec == VideoCodec::VP8 || codec == VideoCodec::VP9)
        return true;
    if (!takeParameterSets(unit, parameters)) {
        *error = QStringLiteral("the encoder's first picture comes without parameter sets");
        return false;
    }
    readSize(unit, parameters);
    return true;
}

} // namespace Tool
