// SPDX-License-Identifier: BSD-3-Clause
#include "scriptedcapture.h"

#include <QtTest>

using namespace Veltra::Ocelle;

const std::string ScriptedCapture::Id = "v4l2:Test_0001";

ScriptedCapture::Bytes ScriptedCapture::grey(std::uint8_t value)
{
    return Bytes(std::size_t(Width * Height * 3 / 2), value);
}

void ScriptedCapture::begin()
{
    m_plugged = std::make_shared<PluggedNodes>();
    m_plugged->set({ webcam(Node) });
    m_counters->captured = m_counters->dropped = m_counters->late = 0;
}

void ScriptedCapture::end()
{
    m_camera.reset();
    m_listener.reset();
    m_source.reset();
    QCOMPARE(m_system->openNow(), 0);
    QCOMPARE(m_system->mappedNow(), 0);
    QCOMPARE(m_system->misuses(), std::vector<std::string>());
}

void ScriptedCapture::open(std::uint32_t fourcc, V4l2Producer::Patience patience)
{
    m_system = std::make_shared<ScriptedV4l2System>(fourcc);
    m_source = std::make_unique<V4l2Source>(
            m_system, std::make_unique<ScriptedVideoNodes>(m_plugged), patience);
    m_source->watch([] {});
    m_camera = m_source->open(Id);
    QVERIFY(m_camera);
    m_listener = std::make_unique<RecordingListener>();
    m_camera->setListener(m_listener.get());
}

bool ScriptedCapture::deliverUntilSeen(const Bytes &data)
{
    const int before = m_listener->frames();
    const std::uint64_t captured = m_counters->captured;
    for (std::uint64_t number = 1; number <= 50; ++number) {
        if (!m_system->deliver(data))
            return false;
        const bool came =
                QTest::qWaitFor([&] { return m_counters->captured >= captured + number; });
        if (came && QTest::qWaitFor([&] { return m_listener->frames() > before; }, 200))
            return true;
    }
    return false;
}
