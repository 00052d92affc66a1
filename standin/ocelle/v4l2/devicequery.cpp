// SPDX-License-Identifier: BSD-3-Clause
#include "devicequery.h"

#include "v4l2format.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr std::uint32_t Capture = V4L2_BUF_TYPE_VIDEO_CAPTURE;
constexpr std::uint32_t MaxAnswers = 256; // of a driver that never says it was the last one

/*! All the answers of an enumerating ioctl, from index 0 until the driver has no more. */
template <class Answer>
std::vector<Answer> enumerate(const OpenDevice &device, unsigned long request, const Answer &first)
{
    std::vector<Answer> all;
    for (std::uint32_t index = 0; index < MaxAnswers; ++index) {
        Answer answer = first;
        answer.index = index;
        if (device.ioctl(request, &answer) != 0)
            break;
        all.push_back(answer);
    }
    return all;
}

/*! Drivers without a list of sizes have the one that is set. */
std::vector<PictureSize> currentSize(const OpenDevice &device)
{
    v4l2_format format {};
    format.type = Capture;
    if (device.ioctl(VIDIOC_G_FMT, &format) != 0)
        return {};
    v4l2_frmsizeenum answer {};
    answer.type = V4L2_FRMSIZE_TYPE_DISCRETE;
    answer.discrete = { format.fmt.pix.width, format.fmt.pix.height };
    return sizesFrom({ answer });
}

/*! Drivers without a list of intervals have the one that is set. */
std::vector<v4l2_fract> currentInterval(const OpenDevice &device)
{
    v4l2_streamparm parameters {};
    parameters.type = Capture;
    v4l2_frmivalenum answer {};
    answer.type = V4L2_FRMIVAL_TYPE_DISCRETE;
    if (device.ioctl(VIDIOC_G_PARM, &parameters) == 0)
        answer.discrete = parameters.parm.capture.timeperframe;
    const std::vector<v4l2_fract> intervals = intervalsFrom({ answer });
    return intervals.empty() ? std::vector<v4l2_fract> { { 1, 30 } } : intervals;
}

std::vector<PictureSize> sizesOf(const OpenDevice &device, std::uint32_t fourcc)
{
    v4l2_frmsizeenum question {};
    question.pixel_format = fourcc;
    const auto sizes = sizesFrom(enumerate(device, VIDIOC_ENUM_FRAMESIZES, question));
    return sizes.empty() ? currentSize(device) : sizes;
}

std::vector<v4l2_fract> intervalsOf(const OpenDevice &device, std::uint32_t fourcc,
                                    const PictureSize &size)
{
    v4l2_frmivalenum question {};
    question.pixel_format = fourcc;
    question.width = std::uint32_t(size.first);
    question.height = std::uint32_t(size.second);
    const auto intervals = intervalsFrom(enumerate(device, VIDIOC_ENUM_FRAMEINTERVALS, question));
    return intervals.empty() ? currentInterval(device) : intervals;
}

void addModes(const OpenDevice &device, std::uint32_t fourcc, std::vector<CaptureMode> &modes)
{
    for (const PictureSize &size : sizesOf(device, fourcc)) {
        for (const v4l2_fract &interval : intervalsOf(device, fourcc, size))
            modes.push_back({ fourcc, size.first, size.second, interval, rateOf(interval) });
    }
}

} // namespace

OpenDevice::OpenDevice(std::shared_ptr<V4l2System> system, const std::string &node)
    : m_system(std::move(system))
    , m_device(m_system->open(node))
    , m_error(m_device < 0 ? errno : 0)
{
}

OpenDevice::~OpenDevice()
{
    if (isOpen())
        m_system->close(m_device);
}

int OpenDevice::ioctl(unsigned long request, void *argument) const
{
    return m_system->ioctl(m_device, request, argument) < 0 ? errno : 0;
}

std::optional<std::int32_t> OpenDevice::control(std::uint32_t id) const
{
    v4l2_control control {};
    control.id = id;
    if (ioctl(VIDIOC_G_CTRL, &control) != 0)
        return {};
    return control.value;
}

std::optional<DeviceAnswers> queryDevice(const OpenDevice &device, V4l2Trouble &trouble)
{
    v4l2_capability capability {};
    trouble = { "does not open", device.error(), {} };
    if (!device.isOpen())
        return {};
    trouble = { "does not tell what it can do", device.ioctl(VIDIOC_QUERYCAP, &capability), {} };
    if (trouble.error)
        return {};

    DeviceAnswers answers;
    answers.kind = nodeKind(capability);
    if (answers.kind != NodeKind::Capture)
        return answers;
    v4l2_fmtdesc question {};
    question.type = Capture;
    for (const v4l2_fmtdesc &format : enumerate(device, VIDIOC_ENUM_FMT, question)) {
        if (V4l2Format::find(format.pixelformat))
            addModes(device, format.pixelformat, answers.modes);
        else
            answers.unusable.push_back(format.pixelformat);
    }
    answers.orientation = device.control(V4L2_CID_CAMERA_ORIENTATION);
    answers.rotation = device.control(V4L2_CID_CAMERA_SENSOR_ROTATION);
    return answers;
}

bool isFree(const OpenDevice &device, V4l2Trouble &trouble)
{
    v4l2_requestbuffers none {};
    none.type = Capture;
    none.memory = V4L2_MEMORY_MMAP;
    trouble = { "does not open", device.ioctl(VIDIOC_REQBUFS, &none), {} };
    return trouble.error == 0;
}

std::string rateLoweringControl(const OpenDevice &device)
{
    const bool isManual = device.control(V4L2_CID_EXPOSURE_AUTO) == V4L2_EXPOSURE_MANUAL;
    if (isManual || device.control(V4L2_CID_EXPOSURE_AUTO_PRIORITY) != 1)
        return {};
    v4l2_queryctrl query {};
    query.id = V4L2_CID_EXPOSURE_AUTO_PRIORITY;
    if (device.ioctl(VIDIOC_QUERYCTRL, &query) != 0)
        return {};
    const char *const name = reinterpret_cast<const char *>(query.name);
    return std::string(name, ::strnlen(name, sizeof query.name));
}

} // namespace Ocelle
} // namespace Veltra
