// SPDX-License-Identifier: BSD-3-Clause
#include "h265encoder.h"

#include "codecopening.h"

#include <algorithm>
#include <vector>

namespace Veltra {
namespace Ocelle {

namespace {
constexpr int CodingUnit = 32; // pixels; the same for all encoders of a process
}

H265Encoder::H265Encoder(const X265Library &library)
    : m_library(library)
{
}

H265Encoder::~H265Encoder()
{
    close();
}

bool H265Encoder::open(const EncoderSettings &settings, std::string *error)
{
    close();
    const x265_api *api = m_library.api();
    if (!api) {
        *error = m_library.error();
        return false;
    }
    if (settings.width < CodingUnit || settings.height < CodingUnit) {
        *error = "x265 takes no pictures below 32x32";
        return false;
    }
    x265_param *param = api->param_alloc();
    if (!param || api->param_default_preset(param, "ultrafast", "zerolatency") != 0) {
        *error = "x265 does not know its presets";
        api->param_free(param);
        return false;
    }
    configure(param, settings);
    {
        const std::lock_guard<std::mutex> lock(codecOpening());
        m_handle = api->encoder_open(param);
    }
    api->picture_init(param, &m_input);
    api->param_free(param);
    if (!m_handle) {
        *error = "x265 does not open; it has written why to standard error";
        return false;
    }
    m_wasOpen = true;
    m_lineLength = roundedUpToEven(settings.width);
    return true;
}

void H265Encoder::close()
{
    if (!m_handle)
        return;
    encodeLastKeyFrame();
    const std::lock_guard<std::mutex> lock(codecOpening());
    m_library.api()->encoder_close(m_handle);
    m_handle = nullptr;
}

// The library has the buffers of the offset filter for every picture but frees them only if the
// last one has used it, as key frames do here. So the last is one, a grey one that nobody gets;
// without it every closing would lose about a hundred bytes for each row of pixels.
void H265Encoder::encodeLastKeyFrame()
{
    const std::vector<std::uint8_t> line(std::size_t(m_lineLength), 128);
    PictureView grey;
    grey.y = grey.cb = grey.cr = line.data(); // again and again: the strides are 0
    x265_nal *nals = nullptr;
    std::uint32_t nalCount = 0;
    setInput(grey, m_input.pts + 1, true);
    m_library.api()->encoder_encode(m_handle, &nals, &nalCount, &m_input, &m_output);
}

void H265Encoder::configure(x265_param *param, const EncoderSettings &settings) const
{
    const bool threaded = settings.threads > 1;
    const std::string pools = threaded ? std::to_string(settings.threads) : "none";
    m_library.api()->param_parse(param, "pools", pools.c_str());
    param->bEnableWavefront = threaded; // rows of one picture side by side
    param->frameNumThreads = 1;
    param->maxCUSize = CodingUnit;
    param->sourceWidth = roundedUpToEven(settings.width);
    param->sourceHeight = roundedUpToEven(settings.height);
    param->internalCsp = X265_CSP_I420;
    param->fpsNum = std::uint32_t(settings.frameRate);
    param->fpsDenom = 1;
    param->keyframeMax = settings.frameRate * KeyFrameSeconds;
    param->scenecutThreshold = 0; // key frames come when asked for, not with the scene
    param->bOpenGOP = 0;          // else a key frame that is asked for is no IDR
    param->bRepeatHeaders = 1;
    param->bAnnexB = 1;
    param->bEmitInfoSEI = 0;
    param->bEnableSAO = 1; // of key frames only, see encodeLastKeyFrame()
    param->selectiveSAO = 1;
    param->logLevel = X265_LOG_ERROR;

    const int rate = settings.bitrate / 1000; // kbit/s, as all of these
    param->rc.vbvMaxBitrate = rate;
    if (settings.constantBitrate) {
        param->rc.rateControlMode = X265_RC_ABR;
        param->rc.bitrate = rate;
        param->rc.bStrictCbr = 1;
        param->rc.vbvBufferSize = std::max(1, rate * 6 / 10); // 0.6 s
    } else { // less than the bit rate where that is good enough, more for a second where it is not
        param->rc.rateControlMode = X265_RC_CRF;
        param->rc.rfConstant = 20;
        param->rc.vbvBufferSize = std::max(1, rate * 3 / 2); // 1.5 s
        param->rc.vbvBufferInit = m_wasOpen ? 0.3 : 0.7;     // each new start takes what is in it
    }
}

void H265Encoder::setInput(const PictureView &picture, std::int64_t index, bool keyFrame)
{
    m_input.pts = index;
    m_input.sliceType = keyFrame ? X265_TYPE_IDR : X265_TYPE_AUTO;
    m_input.bitDepth = 8;
    m_input.colorSpace = X265_CSP_I420;
    m_input.planes[0] = const_cast<std::uint8_t *>(picture.y); // only read
    m_input.planes[1] = const_cast<std::uint8_t *>(picture.cb);
    m_input.planes[2] = const_cast<std::uint8_t *>(picture.cr);
    m_input.stride[0] = picture.yStride;
    m_input.stride[1] = picture.cStride;
    m_input.stride[2] = picture.cStride;
}

bool H265Encoder::encode(const PictureView &picture, std::int64_t index, bool keyFrame,
                         const UnitFunction &onUnit, std::string *error)
{
    if (!m_handle) {
        *error = "x265 is not open";
        return false;
    }
    setInput(picture, index, keyFrame);

    x265_nal *nals = nullptr;
    std::uint32_t nalCount = 0;
    const int count =
            m_library.api()->encoder_encode(m_handle, &nals, &nalCount, &m_input, &m_output);
    if (count < 1 || nalCount < 1) {
        *error = count < 0 ? "x265 failed; it has written why to standard error"
                           : "x265 put nothing out";
        close();
        return false;
    }
    std::size_t size = 0;
    for (std::uint32_t i = 0; i < nalCount; ++i)
        size += nals[i].sizeBytes; // their payloads follow each other in memory
    onUnit({ nals[0].payload, size, m_output.pts, m_output.sliceType == X265_TYPE_IDR });
    return true;
}

} // namespace Ocelle
} // namespace Veltra
