// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "cameracounters.h"
#include "recordinglistener.h"
#include "scriptedv4l2system.h"
#include "scriptedvideonodes.h"
#include "v4l2source.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

/*! For tests: a camera on a scripted kernel, and who takes its pictures. One thread. */
class ScriptedCapture
{
public:
    using Bytes = ScriptedV4l2System::Bytes;
    using Milliseconds = std::chrono::milliseconds;

    static constexpr int Width = ScriptedV4l2System::Width;
    static constexpr int Height = ScriptedV4l2System::Height;
    static constexpr Veltra::Ocelle::CameraCapability Only { Width, Height, 30 };
    static constexpr char Node[] = "/nowhere/video0";
    static const std::string Id;

    static Bytes grey(std::uint8_t value);

protected:
    void begin(); // before each test
    void end();   // after it: nothing is left open
    void open(std::uint32_t fourcc, Veltra::Ocelle::V4l2Producer::Patience patience = {});
    /*! Again and again, as on a busy machine a single one may be late. */
    bool deliverUntilSeen(const Bytes &data);

    std::shared_ptr<ScriptedV4l2System> m_system;
    std::shared_ptr<PluggedNodes> m_plugged;
    std::unique_ptr<Veltra::Ocelle::V4l2Source> m_source;
    std::unique_ptr<RecordingListener> m_listener;
    std::shared_ptr<Veltra::Ocelle::Camera> m_camera;
    const std::shared_ptr<Veltra::Ocelle::CameraCounters> m_counters =
            Veltra::Ocelle::CameraCounters::forCamera(Id);
};
