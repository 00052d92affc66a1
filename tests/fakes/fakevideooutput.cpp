// SPDX-License-Identifier: BSD-3-Clause
#include "fakevideooutput.h"

#include "calllog.h"
#include "fakegraphicbuffer.h"

#include <ocelle/videooutputqt5.h>

#include <algorithm>
#include <cstdint>

namespace {

std::mutex registryMutex;                               // guards registry
std::vector<std::shared_ptr<FakeVideoOutput>> registry; // in the order they were made

} // namespace

std::shared_ptr<FakeVideoOutput> FakeVideoOutput::at(int number)
{
    std::lock_guard<std::mutex> lock(registryMutex);
    const auto index = static_cast<std::size_t>(number - 1);
    return index < registry.size() ? registry[index] : nullptr;
}

int FakeVideoOutput::count()
{
    std::lock_guard<std::mutex> lock(registryMutex);
    return static_cast<int>(registry.size());
}

int FakeVideoOutput::alive()
{
    std::lock_guard<std::mutex> lock(registryMutex);
    return static_cast<int>(std::count_if(registry.begin(), registry.end(),
                                          [](const auto &output) { return output->isAlive(); }));
}

void FakeVideoOutput::forgetAll()
{
    std::lock_guard<std::mutex> lock(registryMutex);
    registry.clear();
}

bool FakeVideoOutput::isAlive() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_alive;
}

bool FakeVideoOutput::hadParent() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_hadParent;
}

QAbstractVideoSurface *FakeVideoOutput::surface() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_surface;
}

bool FakeVideoOutput::isMirrored() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_mirrored;
}

QRect FakeVideoOutput::viewport() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_viewport;
}

QVector<int> FakeVideoOutput::buffers() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    QVector<int> copy = m_buffers;
    copy.detach();
    return copy;
}

QVector<long> FakeVideoOutput::bufferOwners() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    QVector<long> copy = m_owners;
    copy.detach();
    return copy;
}

/*! The one way from the platform's class to its record. */
class FakeVideoOutputAccess
{
public:
    static std::shared_ptr<FakeVideoOutput> create(bool hasParent)
    {
        auto output = std::make_shared<FakeVideoOutput>();
        std::lock_guard<std::mutex> lock(registryMutex);
        registry.push_back(output);
        output->m_number = static_cast<int>(registry.size());
        output->m_hadParent = hasParent;
        return output;
    }

    explicit FakeVideoOutputAccess(FakeVideoOutput &output)
        : m_output(output)
    {
    }

    void log(const QString &what)
    {
        CallLog::instance().add(QStringLiteral("output %1").arg(m_output.m_number), what);
    }

    template <typename Change>
    void change(Change &&change)
    {
        std::lock_guard<std::mutex> lock(m_output.m_mutex);
        change();
    }

    void setAlive(bool alive)
    {
        change([&] { m_output.m_alive = alive; });
    }
    void setSurface(QAbstractVideoSurface *surface)
    {
        change([&] { m_output.m_surface = surface; });
    }
    void setMirrored(bool mirrored)
    {
        change([&] { m_output.m_mirrored = mirrored; });
    }
    void setViewport(const QRect &viewport)
    {
        change([&] { m_output.m_viewport = viewport; });
    }
    void addBuffer(int number, long owners)
    {
        change([&] {
            m_output.m_buffers.append(number);
            m_output.m_owners.append(owners);
        });
    }

private:
    FakeVideoOutput &m_output;
};

namespace Veltra {
namespace Ocelle {

class VideoOutputQt5Private
{
public:
    explicit VideoOutputQt5Private(bool hasParent)
        : output(FakeVideoOutputAccess::create(hasParent))
        , access(*output)
    {
    }

    const std::shared_ptr<FakeVideoOutput> output;
    FakeVideoOutputAccess access;
};

VideoOutputQt5::VideoOutputQt5(QObject *parent)
    : QObject(parent)
    , m_d(new VideoOutputQt5Private(parent != nullptr))
{
    m_d->access.log(QStringLiteral("created"));
}

VideoOutputQt5::~VideoOutputQt5()
{
    m_d->access.setAlive(false);
    m_d->access.log(QStringLiteral("destroyed"));
    delete m_d;
}

QAbstractVideoSurface *VideoOutputQt5::videoSurface() const
{
    return m_d->output->surface();
}

void VideoOutputQt5::setVideoSurface(QAbstractVideoSurface *surface)
{
    m_d->access.setSurface(surface);
    m_d->access.log(surface ? QStringLiteral("setVideoSurface(surface)")
                            : QStringLiteral("setVideoSurface(null)"));
}

void VideoOutputQt5::setViewport(QRect viewport)
{
    m_d->access.setViewport(viewport);
    m_d->access.log(QStringLiteral("setViewport(%1,%2 %3x%4)")
                            .arg(viewport.x())
                            .arg(viewport.y())
                            .arg(qint64(viewport.right()) - viewport.left() + 1)
                            .arg(qint64(viewport.bottom()) - viewport.top() + 1));
}

void VideoOutputQt5::setMirrored(bool mirrored)
{
    m_d->access.setMirrored(mirrored);
    m_d->access.log(QStringLiteral("setMirrored(%1)").arg(mirrored ? 1 : 0));
}

void VideoOutputQt5::stop()
{
    m_d->access.log(QStringLiteral("stop()"));
    m_d->output->stopGate.pass();
}

void VideoOutputQt5::onGraphicBuffer(std::shared_ptr<GraphicBuffer> buffer)
{
    m_d->access.addBuffer(buffer ? buffer->number : -1, buffer.use_count());
    m_d->access.log(QStringLiteral("onGraphicBuffer(%1)").arg(buffer ? buffer->number : -1));
    m_d->output->bufferGate.pass();
}

void VideoOutputQt5::onVideoFrame(const YCbCrFrame *frame)
{
    m_d->access.log(QStringLiteral("onVideoFrame(0x%1)")
                            .arg(reinterpret_cast<std::uintptr_t>(frame), 0, 16));
}

} // namespace Ocelle
} // namespace Veltra
