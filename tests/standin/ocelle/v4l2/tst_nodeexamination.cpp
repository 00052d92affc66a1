// SPDX-License-Identifier: BSD-3-Clause
#include "nodeexamination.h"
#include "scriptedv4l2system.h"
#include "scriptedvideonodes.h"

#include <QtTest>

#include <cerrno>

using namespace Veltra::Ocelle;

/*! What is said of a node, whatever the matter with it is. */
class TestNodeExamination : public QObject
{
    Q_OBJECT
private slots:
    void finding_tellsWhyANodeIsNotOffered_data();
    void finding_tellsWhyANodeIsNotOffered();
    void finding_tellsTheFormatsOfACamera();
    void finding_tellsWhatKeepsACameraFromCapturing_data();
    void finding_tellsWhatKeepsACameraFromCapturing();
    void ids_areThoseOfTheList_whereASerialNumberIsShared();
};

void TestNodeExamination::finding_tellsWhyANodeIsNotOffered_data()
{
    QTest::addColumn<quint32>("capabilities");
    QTest::addColumn<quint32>("fourcc");
    QTest::addColumn<QString>("finding");
    const quint32 nv12 = V4L2_PIX_FMT_NV12;
    QTest::newRow("metadata") << quint32(V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING) << nv12
                              << "not offered: it is a metadata node, which carries no pictures";
    QTest::newRow("output")
            << quint32(V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_STREAMING) << nv12
            << "not offered: it is an output node, which shows pictures instead of taking them";
    QTest::newRow("codec")
            << quint32(V4L2_CAP_VIDEO_M2M_MPLANE | V4L2_CAP_STREAMING) << nv12
            << "not offered: it is a memory-to-memory node, as of a codec or scaler, "
               "not a camera";
    QTest::newRow("multi-planar")
            << quint32(V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING) << nv12
            << "not offered: it is a camera of the multi-planar kind, which is not supported";
    QTest::newRow("no usable format")
            << quint32(V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING) << quint32(V4L2_PIX_FMT_SBGGR8)
            << "not offered: none of its formats can be used (BA81)";
}

void TestNodeExamination::finding_tellsWhyANodeIsNotOffered()
{
    QFETCH(quint32, capabilities);
    QFETCH(quint32, fourcc);
    QFETCH(QString, finding);
    const auto system = std::make_shared<ScriptedV4l2System>(fourcc);
    system->setCapabilities(capabilities);
    const CameraNode node = examineNode(system, webcam("/nowhere/video0"));
    QVERIFY(!node.isOffered);
    QVERIFY(node.id.empty());
    QCOMPARE(QString::fromStdString(node.finding), finding);
    QCOMPARE(system->openNow(), 0);
}

void TestNodeExamination::finding_tellsTheFormatsOfACamera()
{
    const auto system = std::make_shared<ScriptedV4l2System>(V4L2_PIX_FMT_YUYV);
    const CameraNode node = examineNode(system, webcam("/nowhere/video0"));
    QVERIFY(node.isOffered);
    QCOMPARE(node.id, std::string("v4l2:Test_0001"));
    QCOMPARE(node.node, std::string("/nowhere/video0"));
    QCOMPARE(node.name, std::string("Test"));
    QCOMPARE(node.finding, std::string("offered; captures YUYV"));
    QCOMPARE(system->openNow(), 0);
}

void TestNodeExamination::finding_tellsWhatKeepsACameraFromCapturing_data()
{
    QTest::addColumn<quint64>("request"); // 0 is opening
    QTest::addColumn<int>("error");
    QTest::addColumn<QString>("finding");
    QTest::newRow("forbidden") << quint64(0) << EACCES << "does not open: permission denied";
    QTest::newRow("gone") << quint64(0) << ENODEV
                          << "does not open: it was unplugged; plug it in again and open it anew";
    QTest::newRow("no answer") << quint64(VIDIOC_QUERYCAP) << ENOTTY
                               << "does not tell what it can do: Inappropriate ioctl for device";
    QTest::newRow("busy") << quint64(VIDIOC_REQBUFS) << EBUSY
                          << "does not open: another program uses it; close that first";
}

void TestNodeExamination::finding_tellsWhatKeepsACameraFromCapturing()
{
    QFETCH(quint64, request);
    QFETCH(int, error);
    QFETCH(QString, finding);
    const auto system = std::make_shared<ScriptedV4l2System>();
    if (request)
        system->failIoctl(request, error);
    else
        system->failOpening(error);
    const CameraNode node = examineNode(system, webcam("/nowhere/video0"));
    QCOMPARE(QString::fromStdString(node.finding), "Camera \"Test\" (/nowhere/video0) " + finding);
    QCOMPARE(system->openNow(), 0);
}

void TestNodeExamination::ids_areThoseOfTheList_whereASerialNumberIsShared()
{
    const auto system = std::make_shared<ScriptedV4l2System>();
    std::vector<VideoNode> nodes { webcam("/dev/video0"), webcam("/dev/video1", "0002"),
                                   webcam("/dev/video2") };
    nodes[0].properties["ID_PATH"] = "usb-1-1";
    nodes[2].properties["ID_PATH"] = "usb-1-2";
    std::vector<CameraNode> all;
    for (const VideoNode &node : nodes)
        all.push_back(examineNode(system, node));
    useSharedSerialIds(nodes, all);
    QCOMPARE(all[0].id, std::string("v4l2:Test_0001@usb-1-1"));
    QCOMPARE(all[1].id, std::string("v4l2:Test_0002"));
    QCOMPARE(all[2].id, std::string("v4l2:Test_0001@usb-1-2"));
}

QTEST_GUILESS_MAIN(TestNodeExamination)
#include "tst_nodeexamination.moc"
