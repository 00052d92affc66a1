// SPDX-License-Identifier: BSD-3-Clause
#include "v4l2source.h"

#include "librarythread.h"
#include "log.h"
#include "streamingcamera.h"
#include "v4l2format.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr std::chrono::seconds FirstListing { 3 };
constexpr int Quiet = 60;   // milliseconds without an event that end a burst of them
constexpr int Longest = 10; // of these periods: a burst that does not end is looked at anyway

bool isSameNode(const VideoNode &a, const VideoNode &b)
{
    return a.sysPath == b.sysPath && a.plugged == b.plugged;
}

bool contains(const std::vector<VideoNode> &nodes, const VideoNode &node)
{
    return std::any_of(nodes.begin(), nodes.end(),
                       [&node](const VideoNode &other) { return isSameNode(other, node); });
}

std::string formatsText(const std::vector<std::uint32_t> &fourccs)
{
    std::string text;
    for (const std::uint32_t fourcc : fourccs)
        text += (text.empty() ? "" : ", ") + V4l2Format::name(fourcc);
    return text.empty() ? "it has none" : "it has only " + text;
}

} // namespace

V4l2Source::V4l2Source(std::shared_ptr<V4l2System> system, std::unique_ptr<VideoNodes> nodes,
                       V4l2Producer::Patience patience)
    : m_system(std::move(system))
    , m_nodes(std::move(nodes))
    , m_patience(patience)
{
}

V4l2Source::~V4l2Source()
{
    m_quit.wake();
    if (m_thread.joinable())
        m_thread.join();
}

std::vector<CameraDescription> V4l2Source::cameras()
{
    const std::unique_lock<std::mutex> lock = lockListed();
    std::vector<CameraDescription> all;
    for (const Device &device : m_devices)
        all.push_back(describe(device));
    return all;
}

void V4l2Source::watch(std::function<void()> changed)
{
    m_changed = std::move(changed);
    const char *missing = "descriptor";
    try {
        if (m_quit.descriptor() < 0) // then the thread could not be ended
            throw std::system_error(std::make_error_code(std::errc::too_many_files_open));
        missing = "thread";
        m_thread = startThread("OcelleV4l2", [this] { run(); });
    } catch (const std::system_error &) {
        printLine(std::string("no V4L2 cameras: the system has no ") + missing + " left");
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_listed = true;
    }
}

std::shared_ptr<Camera> V4l2Source::open(const std::string &id)
{
    Device device;
    if (!findCamera(id, device)) {
        printLine("there is no camera \"" + id + "\" any more");
        return {};
    }
    const OpenDevice opened(m_system, device.node.node);
    if (!ask(device, opened))
        return {};
    V4l2Trouble trouble;
    if (!isFree(opened, trouble)) {
        report(device, trouble, opened);
        return {};
    }
    const std::shared_ptr<CaptureControl> control = makeControl(device);
    if (!addOpened(device, control)) {
        report(device, { "does not open", ENODEV, {} }, opened);
        return {};
    }
    return std::make_shared<StreamingCamera>(control);
}

bool V4l2Source::getCapabilities(const std::string &id, std::vector<CameraCapability> &all)
{
    Device device;
    if (!findCamera(id, device))
        return false;
    if (!device.answers) {
        const std::shared_ptr<CaptureControl> control = findOpened(id);
        if (control && control->description().info.name == displayName(device.node)) {
            all = control->description().capabilities;
            return true;
        }
    }
    if (!device.answers && !ask(device, OpenDevice(m_system, device.node.node)))
        return false;
    all = capabilitiesOf(device.answers->modes);
    return true;
}

CameraDescription V4l2Source::describe(const Device &device)
{
    CameraDescription camera;
    camera.info.id = device.id;
    camera.info.name = displayName(device.node);
    camera.info.facing = CameraFacing::Back;
    camera.revision = device.node.plugged;
    if (device.answers) {
        camera.info.facing = facingFrom(device.answers->orientation);
        camera.info.mountAngle = mountAngleFrom(device.answers->rotation);
        camera.capabilities = capabilitiesOf(device.answers->modes);
        camera.formats = deliveredFormats(device.answers->modes);
    }
    return camera;
}

V4l2Source::Device *V4l2Source::find(Devices &devices, const VideoNode &node)
{
    const auto found = std::find_if(devices.begin(), devices.end(), [&node](const Device &device) {
        return isSameNode(device.node, node);
    });
    return found == devices.end() ? nullptr : &*found;
}

std::unique_lock<std::mutex> V4l2Source::lockListed()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_listedFirst.wait_for(lock, FirstListing, [this] { return m_listed; }))
        m_isListedLate = true;
    return lock;
}

bool V4l2Source::findCamera(const std::string &id, Device &found)
{
    const std::unique_lock<std::mutex> lock = lockListed();
    for (const Device &device : m_devices) {
        if (device.id != id)
            continue;
        found = device;
        return true;
    }
    return false;
}

/*! The camera opened last with that id, if it still is, unplugged or not. */
std::shared_ptr<CaptureControl> V4l2Source::findOpened(const std::string &id)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_opened.find(id);
    return found == m_opened.end() ? nullptr : found->second.lock();
}

/*! Sees to it that \a device has answers that are good for capturing; if not, says why. */
bool V4l2Source::ask(Device &device, const OpenDevice &opened)
{
    V4l2Trouble trouble { "does not open", opened.error(), {} };
    if (opened.isOpen() && !device.answers) {
        if (std::optional<DeviceAnswers> answers = queryDevice(opened, trouble)) {
            device.answers = std::make_shared<DeviceAnswers>(std::move(*answers));
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (Device *const listed = find(m_devices, device.node))
                listed->answers = device.answers;
        }
    }
    if (!opened.isOpen() || !device.answers) {
        report(device, trouble, opened);
        return false;
    }
    if (device.answers->kind != NodeKind::Capture)
        trouble = { "does not open", 0, whyNotOffered(device.answers->kind) };
    else if (device.answers->modes.empty())
        trouble = { "has no format that can be used", 0, formatsText(device.answers->unusable) };
    else
        return true;
    report(device, trouble, opened);
    return false;
}

void V4l2Source::report(const Device &device, const V4l2Trouble &trouble, const OpenDevice &opened)
{
    const std::string &node = device.node.node;
    printLine(trouble.sentence(displayName(device.node), node,
                               trouble.isBusy() ? holdersOf(node, opened.descriptor()) : ""));
}

std::shared_ptr<CaptureControl> V4l2Source::makeControl(const Device &device) const
{
    const CameraDescription camera = describe(device);
    V4l2Producer::Target target { device.id, camera.info.name, device.node.node, {} };
    const auto makeProducer = [system = m_system, answers = device.answers, patience = m_patience,
                               target](const CameraCapability &capability) {
        V4l2Producer::Target chosen = target;
        const CaptureMode *const mode = chooseMode(answers->modes, capability);
        if (mode)
            chosen.mode = *mode;
        return mode ? std::make_unique<V4l2Producer>(system, chosen, patience) : nullptr;
    };
    return std::make_shared<CaptureControl>(camera, makeProducer);
}

/*! So that it hears of being unplugged; false where it was already. */
bool V4l2Source::addOpened(const Device &device, const std::shared_ptr<CaptureControl> &control)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Device *const listed = find(m_devices, device.node);
    if (!listed)
        return false;
    auto &opened = listed->opened;
    opened.erase(std::remove_if(opened.begin(), opened.end(),
                                [](const auto &other) { return other.expired(); }),
                 opened.end());
    opened.push_back(control);
    m_opened[device.id] = control;
    return true;
}

void V4l2Source::run()
{
    do {
        if (list() && m_changed)
            m_changed();
    } while (waitForChange());
}

/*! Until the events after a change have died down; false to quit. */
bool V4l2Source::waitForChange()
{
    pollfd waited[] = { { m_quit.descriptor(), POLLIN, 0 }, { m_nodes->descriptor(), POLLIN, 0 } };
    int timeout = -1;
    for (int periods = 0; periods <= Longest; ++periods) {
        const int count = ::poll(waited, 2, timeout);
        if (waited[0].revents || (count < 0 && errno != EINTR))
            return false;
        if (count == 0)
            return true;
        if (count > 0) {
            m_nodes->drain();
            timeout = Quiet;
        }
    }
    return true;
}

/*! True if it is another list than anyone has seen. */
bool V4l2Source::list()
{
    Devices before;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        before = m_devices;
    }
    Devices now = collect(before);
    bool isChanged = now.size() != before.size();
    bool isNews;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (Device &device : now) { // what happened to it meanwhile
            Device *const listed = find(m_devices, device.node);
            isChanged = isChanged || !listed;
            if (!listed)
                continue;
            device.opened = listed->opened;
            device.answers = listed->answers ? listed->answers : device.answers;
        }
        before = std::exchange(m_devices, now);
        isNews = m_listed || m_isListedLate;
        m_listed = true;
    }
    m_listedFirst.notify_all();
    for (const Device &device : before) {
        if (find(now, device.node))
            continue;
        const V4l2Trouble trouble { "stopped", ENODEV, {} }; // as the driver tells
        for (const std::weak_ptr<CaptureControl> &opened : device.opened) {
            if (const std::shared_ptr<CaptureControl> control = opened.lock())
                control->unplug(trouble.sentence(displayName(device.node), device.node.node, {}));
        }
    }
    return isChanged && isNews;
}

V4l2Source::Devices V4l2Source::collect(const Devices &before)
{
    Devices now;
    Devices added;
    Devices known = before;
    std::vector<VideoNode> nodes = m_nodes->list();
    m_refused.erase(
            std::remove_if(m_refused.begin(), m_refused.end(),
                           [&nodes](const VideoNode &node) { return !contains(nodes, node); }),
            m_refused.end());
    std::sort(nodes.begin(), nodes.end(),
              [](const VideoNode &a, const VideoNode &b) { return pathId(a) < pathId(b); });
    for (VideoNode &node : nodes) {
        const Device *const same = find(known, node);
        Device device = same ? *same : Device();
        device.node = std::move(node);
        if (same)
            now.push_back(std::move(device));
        else if (isCamera(device))
            added.push_back(std::move(device));
    }
    noteSharedSerials(added, now);
    for (Device &device : added) { // those that stay keep their ids
        device.id = idFor(device.node, now);
        now.push_back(std::move(device));
    }
    std::sort(now.begin(), now.end(), [](const Device &a, const Device &b) { return a.id < b.id; });
    return now;
}

/*! Whether to offer \a device, asking it where udev does not tell enough. */
bool V4l2Source::isCamera(Device &device)
{
    const auto told = nodeKind(device.node.property("ID_V4L_CAPABILITIES"));
    if ((told && told != NodeKind::Capture) || contains(m_refused, device.node))
        return false;
    if (told && !mayTellMounting(device.node))
        return true;
    V4l2Trouble trouble;
    std::optional<DeviceAnswers> answers =
            queryDevice(OpenDevice(m_system, device.node.node), trouble);
    if (!answers) // opening it will tell what the matter is
        return told && !trouble.isGone();
    if (answers->kind != NodeKind::Capture || answers->modes.empty()) {
        m_refused.push_back(device.node);
        return false;
    }
    device.answers = std::make_shared<DeviceAnswers>(std::move(*answers));
    return true;
}

/*! A serial number that several devices have is none. */
void V4l2Source::noteSharedSerials(const Devices &added, const Devices &others)
{
    std::set<std::string> known;
    for (const Devices *const devices : { &others, &added }) {
        for (const Device &device : *devices) {
            const std::string serial = serialId(device.node);
            if (!serial.empty() && !known.insert(serial).second)
                m_sharedSerials.insert(serial);
        }
    }
}

std::string V4l2Source::idFor(const VideoNode &node, const Devices &others)
{
    const auto isTaken = [&others](const std::string &id) {
        return std::any_of(others.begin(), others.end(),
                           [&id](const Device &other) { return other.id == id; });
    };
    const std::string serial = serialId(node);
    const std::string path = pathId(node);
    const auto earlier = m_ids.find({ serial, path });
    if (earlier != m_ids.end() && !isTaken(earlier->second))
        return earlier->second;
    std::string id = serial.empty() ? path : serial;
    if (!serial.empty() && (m_sharedSerials.count(serial) || isTaken(serial)))
        id = sharedSerialId(node);
    for (int number = 2; isTaken(id); ++number)
        id = path + '#' + std::to_string(number);
    m_ids[{ serial, path }] = id;
    return id;
}

} // namespace Ocelle
} // namespace Veltra
