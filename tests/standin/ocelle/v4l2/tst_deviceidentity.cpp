// SPDX-License-Identifier: BSD-3-Clause
#include "deviceidentity.h"
#include "nodekind.h"

#include <QtTest>

#include <linux/v4l2-controls.h>

using namespace Veltra::Ocelle;

namespace {

VideoNode webcam()
{
    VideoNode node;
    node.sysPath = "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-2/1-2:1.0/video4linux/video0";
    node.node = "/dev/video0";
    node.properties = { { "ID_BUS", "usb" },
                        { "ID_SERIAL", "Acme_Cam_4711" },
                        { "ID_SERIAL_SHORT", "4711" },
                        { "ID_USB_INTERFACE_NUM", "00" },
                        { "ID_PATH", "pci-0000:00:14.0-usb-0:2:1.0" },
                        { "ID_V4L_PRODUCT", "Acme Cam: HD" },
                        { "ID_V4L_CAPABILITIES", ":capture:" } };
    node.attributes = { { "index", "0" }, { "name", "acme" } };
    return node;
}

VideoNode platformCamera()
{
    VideoNode node;
    node.sysPath = "/sys/devices/platform/camera.0/video4linux/video7";
    node.node = "/dev/video7";
    node.attributes = { { "index", "0" }, { "name", "camera-000-capture" } };
    return node;
}

v4l2_capability answer(std::uint32_t deviceCaps)
{
    v4l2_capability capability {};
    capability.capabilities = V4L2_CAP_DEVICE_CAPS | V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_META_CAPTURE;
    capability.device_caps = deviceCaps;
    return capability;
}

} // namespace

class TestDeviceIdentity : public QObject
{
    Q_OBJECT
private slots:
    void serialId_isTheSameOnAnyPortAndNode();
    void serialId_isEmpty_whenTheDeviceHasNoSerialNumber();
    void serialId_tellsTheCamerasOfOneDeviceApart();
    void pathId_comesFromSysfs_whenThereIsNoUdevDaemon();
    void pathId_doesNotDependOnTheNodesNumber();
    void pathId_tellsEqualCamerasOfOneDeviceApart();
    void displayName_isValidText_data();
    void displayName_isValidText();
    void mayTellMounting_isFalse_forUsb();
    void facingAndMountAngle_comeFromTheControls();
    void nodeKind_fromTheDriversAnswer_data();
    void nodeKind_fromTheDriversAnswer();
    void nodeKind_fromUdev();
    void whyNotOffered_isEmptyForCamerasOnly();
};

void TestDeviceIdentity::serialId_isTheSameOnAnyPortAndNode()
{
    VideoNode other = webcam();
    other.node = "/dev/video9";
    other.sysPath = "/sys/devices/other/video4linux/video9";
    other.properties["ID_PATH"] = "pci-0000:00:14.0-usb-0:7:1.0";
    QCOMPARE(serialId(webcam()), std::string("v4l2:Acme_Cam_4711"));
    QCOMPARE(serialId(other), serialId(webcam()));
    QVERIFY(pathId(other) != pathId(webcam()));
}

void TestDeviceIdentity::serialId_isEmpty_whenTheDeviceHasNoSerialNumber()
{
    VideoNode node = webcam();
    node.properties.erase("ID_SERIAL_SHORT"); // ID_SERIAL is then only maker and model
    QCOMPARE(serialId(node), std::string());
    QCOMPARE(pathId(node), std::string("v4l2:pci-0000:00:14.0-usb-0:2:1.0"));
}

void TestDeviceIdentity::serialId_tellsTheCamerasOfOneDeviceApart()
{
    VideoNode infrared = webcam();
    infrared.properties["ID_USB_INTERFACE_NUM"] = "02";
    QCOMPARE(serialId(infrared), std::string("v4l2:Acme_Cam_4711:if02"));
    VideoNode second = webcam();
    second.attributes["index"] = "2";
    QCOMPARE(serialId(second), std::string("v4l2:Acme_Cam_4711:2"));
    QCOMPARE(pathId(second), std::string("v4l2:pci-0000:00:14.0-usb-0:2:1.0:2"));
}

void TestDeviceIdentity::pathId_comesFromSysfs_whenThereIsNoUdevDaemon()
{
    QCOMPARE(pathId(platformCamera()), std::string("v4l2:platform/camera.0:camera-000-capture"));
}

void TestDeviceIdentity::pathId_doesNotDependOnTheNodesNumber()
{
    VideoNode other = platformCamera();
    other.sysPath = "/sys/devices/platform/camera.0/video4linux/video12";
    other.node = "/dev/video12";
    QCOMPARE(pathId(other), pathId(platformCamera()));
}

void TestDeviceIdentity::pathId_tellsEqualCamerasOfOneDeviceApart()
{
    VideoNode other = platformCamera();
    other.attributes["name"] = "camera-001-capture";
    QVERIFY(pathId(other) != pathId(platformCamera()));
}

void TestDeviceIdentity::displayName_isValidText_data()
{
    QTest::addColumn<QByteArray>("product");
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("plain") << QByteArray("Acme Cam: HD") << QByteArray("Acme Cam: HD");
    QTest::newRow("escaped") << QByteArray("Acme\\x20Cam\\x21") << QByteArray("Acme Cam!");
    QTest::newRow("not an escape") << QByteArray("A\\xzz\\x2") << QByteArray("A\\xzz\\x2");
    QTest::newRow("blanks and controls") << QByteArray(" A\tB\n ") << QByteArray("A B");
    QTest::newRow("not UTF-8") << QByteArray("A\xff"
                                             "B\xc3")
                               << QByteArray("A\xEF\xBF\xBD"
                                             "B\xEF\xBF\xBD");
    QTest::newRow("UTF-8") << QByteArray("Cam\xc3\xa9ra") << QByteArray("Cam\xc3\xa9ra");
    QTest::newRow("surrogate") << QByteArray("\xed\xa0\x80")
                               << QByteArray("\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
    QTest::newRow("none") << QByteArray() << QByteArray("acme");
}

void TestDeviceIdentity::displayName_isValidText()
{
    QFETCH(QByteArray, product);
    VideoNode node = webcam();
    node.properties["ID_V4L_PRODUCT"] = product.toStdString();
    QTEST(QByteArray::fromStdString(displayName(node)), "name");
}

void TestDeviceIdentity::mayTellMounting_isFalse_forUsb()
{
    QVERIFY(!mayTellMounting(webcam()));
    QVERIFY(mayTellMounting(platformCamera()));
}

void TestDeviceIdentity::facingAndMountAngle_comeFromTheControls()
{
    QVERIFY(facingFrom(V4L2_CAMERA_ORIENTATION_FRONT) == CameraFacing::Front);
    QVERIFY(facingFrom(V4L2_CAMERA_ORIENTATION_BACK) == CameraFacing::Back);
    QVERIFY(facingFrom(V4L2_CAMERA_ORIENTATION_EXTERNAL) == CameraFacing::Back);
    QVERIFY(facingFrom({}) == CameraFacing::Back);
    QCOMPARE(mountAngleFrom({}), 0);
    QCOMPARE(mountAngleFrom(0), 0);
    QCOMPARE(mountAngleFrom(90), 270); // the application is told 360 - 270
    QCOMPARE(mountAngleFrom(180), 180);
    QCOMPARE(mountAngleFrom(270), 90);
    QCOMPARE(mountAngleFrom(45), 0);
    QCOMPARE(mountAngleFrom(-90), 90);
}

void TestDeviceIdentity::nodeKind_fromTheDriversAnswer_data()
{
    QTest::addColumn<quint32>("caps");
    QTest::addColumn<int>("kind");
    const auto row = [](const char *name, quint32 caps, NodeKind kind) {
        QTest::newRow(name) << caps << int(kind);
    };
    row("camera", V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING, NodeKind::Capture);
    row("only read()", V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_READWRITE, NodeKind::NoStreaming);
    row("multi-planar", V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING, NodeKind::MultiPlanar);
    row("metadata", V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING, NodeKind::Metadata);
    row("output", V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_STREAMING, NodeKind::Output);
    row("codec", V4L2_CAP_VIDEO_M2M_MPLANE | V4L2_CAP_STREAMING, NodeKind::MemoryToMemory);
    row("old codec", V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_OUTPUT, NodeKind::MemoryToMemory);
    row("radio", V4L2_CAP_RADIO, NodeKind::Other);
}

void TestDeviceIdentity::nodeKind_fromTheDriversAnswer()
{
    QFETCH(quint32, caps);
    QTEST(int(nodeKind(answer(caps))), "kind");
}

void TestDeviceIdentity::nodeKind_fromUdev()
{
    QVERIFY(nodeKind(std::string(":capture:video_overlay:audio:tuner:")) == NodeKind::Capture);
    QVERIFY(nodeKind(std::string(":video_output:audio:")) == NodeKind::Output);
    QVERIFY(nodeKind(std::string(":capture:video_output:")) == NodeKind::MemoryToMemory);
    QVERIFY(nodeKind(std::string(":")) == NodeKind::Other);
    QVERIFY(!nodeKind(std::string()));
}

void TestDeviceIdentity::whyNotOffered_isEmptyForCamerasOnly()
{
    QCOMPARE(whyNotOffered(NodeKind::Capture), std::string());
    for (const NodeKind kind : { NodeKind::MultiPlanar, NodeKind::NoStreaming, NodeKind::Metadata,
                                 NodeKind::Output, NodeKind::MemoryToMemory, NodeKind::Other })
        QVERIFY(!whyNotOffered(kind).empty());
}

QTEST_APPLESS_MAIN(TestDeviceIdentity)
#include "tst_deviceidentity.moc"
