// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "graphicbuffer.h"
#include "recordinglistener.h"
#include "v4l2source.h"
#include "vividdevice.h"

#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// What the tests on the virtual machine's cameras share.

using Bytes = std::vector<std::uint8_t>;

constexpr Veltra::Ocelle::CameraCapability Small { 640, 360, 30 };
extern const std::string FirstId;
extern const std::string SecondId;

bool isInVm();
/*! Both cameras are plugged in and nobody has them, which is a check for leaks too. */
void makeReady();

/*! The machine's cameras; \a changed is called when they come and go. */
std::unique_ptr<Veltra::Ocelle::V4l2Source> makeSource(const std::function<void()> &changed = {});
QStringList idsOf(Veltra::Ocelle::V4l2Source &source);

/*! Descriptors of this process that refer to a video node; they also count once it is gone. */
int openVideoNodes();
/*! Pictures of a driver's memory that this process has mapped. */
int mappedVideoNodes();

/*! The whole picture as planar 4:2:0, without what is beside its lines. */
Bytes planar(const Veltra::Ocelle::GraphicBuffer &picture);
