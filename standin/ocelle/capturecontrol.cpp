// SPDX-License-Identifier: BSD-3-Clause
#include "capturecontrol.h"

#include "capabilities.h"
#include "log.h"

#include <utility>

namespace Veltra {
namespace Ocelle {

CaptureControl::CaptureControl(CameraDescription description, MakeProducer makeProducer)
    : m_description(std::move(description))
    , m_makeProducer(std::move(makeProducer))
    , m_counters(CameraCounters::forCamera(m_description.info.id))
{
}

bool CaptureControl::start(const CameraCapability &capability)
{
    if (!isOffered(capability) || !beginStart())
        return false;
    return finishStart(m_makeProducer(capability)); // takes its time, so without the mutex
}

void CaptureControl::stop()
{
    std::shared_ptr<CaptureRun> run;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        run = m_run;
    }
    if (!run)
        return;
    if (m_gate->isCalling()) {
        run->requestSilentStop();
        return;
    }
    run->requestStop();
    run->waitUntilFinished();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_run == run)
        m_run.reset();
}

bool CaptureControl::isStarted() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_run && m_run->isActive();
}

void CaptureControl::setListener(CameraListener *listener)
{
    m_gate->set(listener);
}

void CaptureControl::unplug()
{
    unplug("Camera " + quotedName() + " was unplugged");
}

void CaptureControl::unplug(const std::string &error)
{
    std::shared_ptr<CaptureRun> run;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_unplugged = true;
        run = m_run;
    }
    if (run)
        run->fail(error);
}

bool CaptureControl::isOffered(const CameraCapability &capability) const
{
    for (const CameraCapability &offered : m_description.capabilities) {
        if (isSame(offered, capability))
            return true;
    }
    std::string line = "camera " + quotedName() + " does not offer " + toText(capability);
    if (const CameraCapability *const nearest = findNearest(m_description.capabilities, capability))
        line += "; the nearest it offers is " + toText(*nearest);
    printLine(line);
    return false;
}

bool CaptureControl::beginStart()
{
    const char *obstacle = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_unplugged)
            obstacle = " was unplugged";
        else if (m_starting || (m_run && m_run->isActive()))
            obstacle = " is started already";
        else
            m_starting = true;
    }
    if (obstacle)
        printLine("camera " + quotedName() + obstacle);
    return !obstacle;
}

bool CaptureControl::finishStart(std::unique_ptr<PictureProducer> producer)
{
    const bool made = producer != nullptr;
    const auto run = std::make_shared<CaptureRun>(m_description.info.name, m_gate, m_counters,
                                                  std::move(producer));
    const char *obstacle = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_starting = false;
        if (!made)
            return false;
        if (m_unplugged)
            obstacle = " was unplugged";
        else if (!run->start(m_run))
            obstacle = " does not start: the system has no thread left";
        else
            m_run = run;
    }
    if (obstacle)
        printLine("camera " + quotedName() + obstacle);
    return !obstacle;
}

std::string CaptureControl::quotedName() const
{
    return '"' + m_description.info.name + '"';
}

} // namespace Ocelle
} // namespace Veltra
