// SPDX-License-Identifier: BSD-3-Clause
#include "hotplugprobe.h"

#include "discovery.h"
#include "session.h"

#include <ocelle/cameramanager.h>

#include <algorithm>
#include <mutex>
#include <vector>

namespace Compliance {
namespace {

using namespace Veltra::Ocelle;

struct HotPlugEvent
{
    std::string id;
    bool isAdded;
};

/*! Listens to the manager, on threads of the library. */
class HotPlugProbe : public CameraManagerListener
{
public:
    explicit HotPlugProbe(Session *session)
        : m_session(session)
    {
    }

    void onCameraAdded(const std::string &id) override { add({ id, true }); }
    void onCameraRemoved(const std::string &id) override { add({ id, false }); }

    std::vector<HotPlugEvent> events() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_events;
    }

private:
    void add(const HotPlugEvent &event)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_events.push_back(event);
        }
        m_session->wake();
    }

    Session *const m_session;
    mutable std::mutex m_mutex; // guards m_events
    std::vector<HotPlugEvent> m_events;
};

void listen(Session &session, CameraManagerListener *listener)
{
    CameraManager *const manager = OcelleManager();
    session.call(QStringLiteral("CameraManager::setListener()"),
                 [&] { manager->setListener(listener); });
}

// Whether the listing agrees with the last event about that camera; it may have changed since.
bool isListedSo(Session &session, const HotPlugProbe &probe, const std::string &id)
{
    const auto agrees = [&] {
        const auto events = probe.events();
        const auto last = std::find_if(events.rbegin(), events.rend(),
                                       [&](const HotPlugEvent &event) { return event.id == id; });
        const auto ids = cameraIds(session);
        const bool isListed = std::find(ids.begin(), ids.end(), id) != ids.end();
        return last != events.rend() && last->isAdded == isListed;
    };
    return session.waitUntil(agrees, session.patience().wait);
}

Outcome judge(Session &session, HotPlugProbe *probe)
{
    const auto hasBoth = [&] {
        bool added = false;
        bool removed = false;
        for (const HotPlugEvent &event : probe->events())
            (event.isAdded ? added : removed) = true;
        return added && removed;
    };
    const int seconds = session.options().hotPlug;
    if (!session.waitUntil(hasBoth, seconds * 1000))
        return Outcome::fail(
                QStringLiteral("within %1 s there were %2 reports, not of both a camera that came "
                               "and one that went")
                        .arg(seconds)
                        .arg(probe->events().size()));
    for (const HotPlugEvent &event : probe->events()) {
        if (!isListedSo(session, *probe, event.id))
            return Outcome::fail(QStringLiteral("%1 was told as %2, and the listing disagrees")
                                         .arg(QString::fromStdString(event.id),
                                              event.isAdded ? QStringLiteral("added")
                                                            : QStringLiteral("removed")));
    }
    return Outcome::pass(QStringLiteral("reports: %1").arg(probe->events().size()));
}

} // namespace

Outcome hotPlug(Session &session, const Device &)
{
    if (session.options().hotPlug == 0)
        return Outcome::skip(QStringLiteral("run with --hotplug SECONDS, and plug a camera in and "
                                            "out meanwhile"));
    auto *const probe = session.keep<HotPlugProbe>(&session);
    listen(session, probe);
    Outcome outcome = judge(session, probe);
    listen(session, nullptr);
    const std::size_t count = probe->events().size();
    if (outcome.kind == Outcome::Kind::Pass &&
        !session.staysQuiet([&] { return probe->events().size() > count; }))
        outcome = Outcome::fail(QStringLiteral("a report comes after setListener(null) returned"));
    return outcome;
}

} // namespace Compliance
