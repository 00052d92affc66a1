// SPDX-License-Identifier: BSD-3-Clause
#include "recordinglistener.h"
#include "scriptedv4l2system.h"
#include "scriptedvideonodes.h"
#include "stderrcapture.h"
#include "v4l2source.h"

#include <QProcess>
#include <QTemporaryFile>
#include <QtTest>

#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

using namespace Veltra::Ocelle;

/*! What is listed and opened, and what is asked of the devices for that. */
class TestV4l2Source : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void listing_opensNoDeviceThatUdevKnows();
    void listing_asksBuiltInCamerasOnce();
    void listing_asksOnce_whereUdevTellsNothing();
    void listing_asksOnce_whatIsNoCamera();
    void burstOfEvents_isOneListing_andOneThatDoesNotEndIsLookedAt();
    void listingThatTookTooLong_isAChange();
    void equalSerials_getThePlaceBesides_andKeepTheirIds();
    void serialThatTurnsOutShared_keepsTheIdItWasGiven();
    void capabilities_areAskedForOnce();
    void capabilities_ofAnOpenCamera_areNotAskedForAnew();
    void busyDevice_isRefused_namingWhoHasIt();
    void deviceInUseHere_isRefused_namingThisProgram();
    void forbiddenDevice_isRefused_namingTheGroup();
    void deviceOfNoGroup_isRefused_namingTheRule();
    void cameraThatWent_isRefused();
    void unpluggedWhileIdle_reportsNothing();
    void withoutADescriptor_thereAreNoCameras();

private:
    void list(std::vector<VideoNode> nodes);
    QStringList ids();
    QString refusal(); // the line about a camera that does not open

    std::shared_ptr<ScriptedV4l2System> m_system;
    std::shared_ptr<PluggedNodes> m_plugged;
    std::unique_ptr<V4l2Source> m_source;
    std::atomic<int> m_changes { 0 };
};

namespace {

const std::string Id = "v4l2:Test_0001";

std::unique_ptr<QTemporaryFile> fileInANodesPlace()
{
    auto file = std::make_unique<QTemporaryFile>();
    return file->open() ? std::move(file) : nullptr;
}

/*! One of several webcams with the same serial number. */
VideoNode at(const std::string &port, const std::string &node)
{
    VideoNode device = webcam(node);
    device.sysPath = "/sys/devices/usb1/" + port + "/video4linux/" + node.substr(5);
    device.properties["ID_PATH"] = "usb-" + port;
    return device;
}

} // namespace

void TestV4l2Source::init()
{
    m_system = std::make_shared<ScriptedV4l2System>();
    m_plugged = std::make_shared<PluggedNodes>();
    m_source.reset();
    m_changes = 0;
}

void TestV4l2Source::cleanup()
{
    m_source.reset();
    QCOMPARE(m_system->openNow(), 0);
    QCOMPARE(m_system->misuses(), std::vector<std::string>());
}

void TestV4l2Source::list(std::vector<VideoNode> nodes)
{
    m_plugged->set(std::move(nodes));
    m_source =
            std::make_unique<V4l2Source>(m_system, std::make_unique<ScriptedVideoNodes>(m_plugged));
    m_source->watch([this] { ++m_changes; });
}

QStringList TestV4l2Source::ids()
{
    QStringList all;
    for (const CameraDescription &camera : m_source->cameras())
        all.append(QString::fromStdString(camera.info.id));
    return all;
}

QString TestV4l2Source::refusal()
{
    StderrCapture output;
    const std::shared_ptr<Camera> camera = m_source->open(Id);
    return camera ? QStringLiteral("it opened") : output.lines().join('\n');
}

void TestV4l2Source::listing_opensNoDeviceThatUdevKnows()
{
    VideoNode metadata = webcam("/dev/video1");
    metadata.sysPath += '1';
    metadata.properties["ID_V4L_CAPABILITIES"] = ":";
    VideoNode output = webcam("/dev/video2", "0002");
    output.properties["ID_V4L_CAPABILITIES"] = ":video_output:";
    const std::vector<VideoNode> few { webcam("/dev/video0"), metadata, output };
    list(few);
    const std::vector<CameraDescription> cameras = m_source->cameras();
    QCOMPARE(cameras.size(), std::size_t(1));
    QCOMPARE(cameras.front().info.id, Id);
    QCOMPARE(cameras.front().info.name, std::string("Test"));

    std::vector<VideoNode> more = few;
    more.push_back(webcam("/dev/video3", "0003"));
    m_plugged->set(more);
    QTRY_COMPARE(m_source->cameras().size(), std::size_t(2));
    QTRY_COMPARE(m_changes.load(), 1);
    m_plugged->set(few);
    QTRY_COMPARE(m_source->cameras().size(), std::size_t(1));
    QCOMPARE(m_system->opens(), 0);
}

void TestV4l2Source::listing_asksBuiltInCamerasOnce()
{
    m_system->setControl(V4L2_CID_CAMERA_ORIENTATION, V4L2_CAMERA_ORIENTATION_FRONT);
    m_system->setControl(V4L2_CID_CAMERA_SENSOR_ROTATION, 270);
    VideoNode sensor = webcam("/dev/video0");
    sensor.properties["ID_BUS"] = "platform";
    list({ sensor });
    QCOMPARE(m_source->cameras().size(), std::size_t(1));
    const CameraInfo info = m_source->cameras().front().info;
    QVERIFY(info.facing == CameraFacing::Front);
    QCOMPARE(info.mountAngle, mountAngleFrom(270));
    QVERIFY(info.mountAngle != 0);
    const int listings = m_plugged->listings;
    m_plugged->set({ sensor, webcam("/dev/video1", "0002") });
    QTRY_COMPARE(m_source->cameras().size(), std::size_t(2));
    QVERIFY(m_plugged->listings > listings);
    QCOMPARE(m_system->opens(), 1);
}

void TestV4l2Source::listing_asksOnce_whereUdevTellsNothing()
{
    VideoNode node = webcam("/dev/video0");
    node.properties.erase("ID_V4L_CAPABILITIES");
    list({ node });
    QCOMPARE(m_source->cameras().size(), std::size_t(1));
    QVERIFY(m_source->cameras().front().formats == std::vector<PixelFormat> { PixelFormat::NV12 });
    QCOMPARE(m_system->opens(), 1);
}

void TestV4l2Source::listing_asksOnce_whatIsNoCamera()
{
    VideoNode node = webcam("/dev/video0");
    node.properties.erase("ID_V4L_CAPABILITIES");
    m_system->setCapabilities(V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING);
    list({ node });
    QVERIFY(m_source->cameras().empty());
    QCOMPARE(m_system->opens(), 1);
    m_plugged->set({ node, webcam("/dev/video1", "0002") });
    QTRY_COMPARE(m_source->cameras().size(), std::size_t(1));
    QCOMPARE(m_system->opens(), 1);

    // Plugged in again it may be something else.
    m_system->setCapabilities(V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING);
    node.plugged = 2;
    m_plugged->set({ node, webcam("/dev/video1", "0002") });
    QTRY_COMPARE(m_source->cameras().size(), std::size_t(2));
    QCOMPARE(m_system->opens(), 2);
}

void TestV4l2Source::burstOfEvents_isOneListing_andOneThatDoesNotEndIsLookedAt()
{
    constexpr int events = 100;
    list({});
    QVERIFY(m_source->cameras().empty());
    int before = m_plugged->listings;
    for (int i = 0; i < events; ++i)
        m_plugged->set(i % 2 ? std::vector<VideoNode> { webcam("/dev/video0") }
                             : std::vector<VideoNode>());
    QTRY_COMPARE(m_source->cameras().size(), std::size_t(1));
    // One, if this thread was not held up in between.
    QVERIFY(m_plugged->listings - before < events / 10);

    before = m_plugged->listings;
    m_plugged->set({});
    const auto isListed = [&] {
        m_plugged->event.wake();
        return m_plugged->listings > before;
    };
    QVERIFY(QTest::qWaitFor(isListed)); // which tries every few milliseconds
}

void TestV4l2Source::listingThatTookTooLong_isAChange()
{
    VideoNode sensor = webcam("/dev/video0");
    sensor.properties["ID_BUS"] = "platform";
    m_system->slowDown(VIDIOC_QUERYCAP, std::chrono::milliseconds(4000));
    list({ sensor });
    QVERIFY(m_source->cameras().empty()); // it did not wait for ever
    QTRY_COMPARE_WITH_TIMEOUT(m_changes.load(), 1, 10000);
    QCOMPARE(m_source->cameras().size(), std::size_t(1));
}

void TestV4l2Source::equalSerials_getThePlaceBesides_andKeepTheirIds()
{
    const VideoNode left = at("1-1", "/dev/video0");
    const VideoNode right = at("1-2", "/dev/video1");
    const QStringList both { "v4l2:Test_0001@usb-1-1", "v4l2:Test_0001@usb-1-2" };
    list({ right, left });
    QCOMPARE(ids(), both);
    m_plugged->set({ right });
    QTRY_COMPARE(ids(), both.mid(1));
    m_plugged->set({ right, at("1-1", "/dev/video7") });
    QTRY_COMPARE(ids(), both);
}

void TestV4l2Source::serialThatTurnsOutShared_keepsTheIdItWasGiven()
{
    const VideoNode first = at("1-1", "/dev/video0");
    const VideoNode second = at("1-2", "/dev/video1");
    const QStringList both { "v4l2:Test_0001", "v4l2:Test_0001@usb-1-2" };
    list({ first });
    QCOMPARE(ids(), both.mid(0, 1));
    m_plugged->set({ first, second });
    QTRY_COMPARE(ids(), both);
    m_plugged->set({ second });
    QTRY_COMPARE(ids(), both.mid(1));
    m_plugged->set({ second, at("1-1", "/dev/video7") });
    QTRY_COMPARE(ids(), both);
}

void TestV4l2Source::capabilities_areAskedForOnce()
{
    list({ webcam("/dev/video0") });
    for (int i = 0; i < 3; ++i) {
        std::vector<CameraCapability> all;
        QVERIFY(m_source->getCapabilities(Id, all));
        QCOMPARE(all.size(), std::size_t(1));
        QCOMPARE(all.front().width, ScriptedV4l2System::Width);
        QCOMPARE(all.front().height, ScriptedV4l2System::Height);
        QCOMPARE(int(all.front().frameRate), 30);
    }
    QCOMPARE(m_system->opens(), 1);
}

void TestV4l2Source::capabilities_ofAnOpenCamera_areNotAskedForAnew()
{
    list({ webcam("/dev/video0") });
    std::shared_ptr<Camera> camera = m_source->open(Id);
    QVERIFY(camera);
    const int opens = m_system->opens();
    VideoNode again = webcam("/dev/video0");
    again.plugged = 2;
    m_plugged->set({ again });
    QTRY_COMPARE(m_changes.load(), 1);
    std::vector<CameraCapability> all;
    QVERIFY(m_source->getCapabilities(Id, all));
    QCOMPARE(all.size(), std::size_t(1));
    QCOMPARE(all.front().width, ScriptedV4l2System::Width);
    QCOMPARE(m_system->opens(), opens);

    camera.reset(); // then it is the new one that is asked
    QVERIFY(m_source->getCapabilities(Id, all));
    QCOMPARE(m_system->opens(), opens + 1);
}

void TestV4l2Source::busyDevice_isRefused_namingWhoHasIt()
{
    const auto file = fileInANodesPlace();
    QVERIFY(file);
    file->close();
    QProcess holder;
    holder.setStandardInputFile(file->fileName());
    holder.start(QStringLiteral("sleep"), { QStringLiteral("60") });
    QVERIFY(holder.waitForStarted());
    list({ webcam(file->fileName().toStdString()) });
    m_system->failIoctl(VIDIOC_REQBUFS, EBUSY);
    QCOMPARE(refusal(), QStringLiteral("ocelle: Camera \"Test\" (%1) does not open: it is in use "
                                       "by \"sleep\" (process %2); stop it there first")
                                .arg(file->fileName())
                                .arg(holder.processId()));
    holder.kill();
    QVERIFY(holder.waitForFinished());
    const QString unknown = refusal();
    QVERIFY2(unknown.contains("another program uses it"), qPrintable(unknown));
    m_system->failIoctl(VIDIOC_REQBUFS, 0);
    QVERIFY(m_source->open(Id));
}

void TestV4l2Source::deviceInUseHere_isRefused_namingThisProgram()
{
    const auto file = fileInANodesPlace();
    QVERIFY(file);
    QFile used(file->fileName());
    QVERIFY(used.open(QIODevice::ReadOnly));
    list({ webcam(file->fileName().toStdString()) });
    m_system->failIoctl(VIDIOC_REQBUFS, EBUSY);
    const QString line = refusal();
    QVERIFY2(line.contains("in use by this program;"), qPrintable(line));
}

void TestV4l2Source::forbiddenDevice_isRefused_namingTheGroup()
{
    const auto file = fileInANodesPlace();
    QVERIFY(file);
    const QByteArray name = file->fileName().toLocal8Bit();
    const group *const video = ::getgrnam("video");
    const bool isGroups =
            video && ::chown(name, uid_t(-1), video->gr_gid) == 0 && ::chmod(name, 0660) == 0;
    list({ webcam(name.toStdString()) });
    m_system->failOpening(EACCES);
    const QString line = refusal();
    const QString start = QStringLiteral("ocelle: Camera \"Test\" (%1) does not open: permission "
                                         "denied")
                                  .arg(file->fileName());
    QVERIFY2(line.startsWith(start), qPrintable(line));
    // Only root, or who is in it, can give a file to that group.
    QVERIFY2(line.contains(isGroups ? "members of the group \"video\" may use it (as root: adduser "
                                      "USER video)"
                                    : "the rule SUBSYSTEM==\"video4linux\", GROUP=\"video\""),
             qPrintable(line));
    QCOMPARE(m_system->calls(VIDIOC_QUERYCAP), 0);
}

void TestV4l2Source::deviceOfNoGroup_isRefused_namingTheRule()
{
    const auto file = fileInANodesPlace();
    QVERIFY(file);
    QVERIFY(file->setPermissions(QFile::ReadOwner | QFile::WriteOwner));
    list({ webcam(file->fileName().toStdString()) });
    m_system->failOpening(EACCES);
    const QString line = refusal();
    QVERIFY2(line.contains("does not open: permission denied; a file in /etc/udev/rules.d with the "
                           "rule SUBSYSTEM==\"video4linux\", GROUP=\"video\", MODE=\"0660\" lets"),
             qPrintable(line));
}

void TestV4l2Source::cameraThatWent_isRefused()
{
    list({ webcam("/dev/video0") });
    QVERIFY(m_source->open(Id));
    m_system->failOpening(ENOENT); // before the event about it
    QVERIFY(refusal().endsWith(
            "does not open: there is no such node; it was unplugged, or this is a "
            "container that was not given it"));
    m_plugged->set({});
    QTRY_VERIFY(m_source->cameras().empty());
    QVERIFY(refusal().contains("there is no camera \"" + QString::fromStdString(Id)));
}

void TestV4l2Source::unpluggedWhileIdle_reportsNothing()
{
    list({ webcam("/dev/video0") });
    const std::shared_ptr<Camera> camera = m_source->open(Id);
    QVERIFY(camera);
    RecordingListener listener;
    camera->setListener(&listener);
    m_plugged->set({});
    QTRY_COMPARE(m_changes.load(), 1);
    QVERIFY(listener.errors().empty());
    const StderrCapture quiet; // of why it does not start
    QTRY_VERIFY(!camera->startCapture({ 64, 48, 30 }, 255));
}

void TestV4l2Source::withoutADescriptor_thereAreNoCameras()
{
    rlimit usual;
    QCOMPARE(::getrlimit(RLIMIT_NOFILE, &usual), 0);
    rlimit none = usual;
    none.rlim_cur = 0;
    m_plugged->set({ webcam("/dev/video0") });
    auto nodes = std::make_unique<ScriptedVideoNodes>(m_plugged);
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &none), 0);
    auto source = std::make_unique<V4l2Source>(m_system, std::move(nodes));
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &usual), 0);
    StderrCapture output;
    source->watch([this] { ++m_changes; });
    QVERIFY(source->cameras().empty());
    source.reset(); // has no thread to wait for
    QCOMPARE(output.lines(),
             QStringList("ocelle: no V4L2 cameras: the system has no descriptor left"));
}

QTEST_GUILESS_MAIN(TestV4l2Source)
#include "tst_v4l2source.moc"
