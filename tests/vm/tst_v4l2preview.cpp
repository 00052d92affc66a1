// SPDX-License-Identifier: BSD-3-Clause
#include "vividdevice.h"

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

struct Result
{
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

Result run(const QStringList &arguments)
{
    QProcess tool;
    tool.start(QStringLiteral(OCELLE_TOOL), arguments);
    if (!tool.waitForFinished(120000))
        return {};
    return { tool.exitCode(), tool.readAllStandardOutput(), tool.readAllStandardError() };
}

const QString Id = QStringLiteral("v4l2:platform-vivid.0:vivid-000-vid-cap");

/*! Whether \a process has pictures of a device mapped, which is while it captures. */
bool isCapturing(const QProcess &process)
{
    QFile maps(QStringLiteral("/proc/%1/maps").arg(process.processId()));
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains("/dev/video");
}

/*! Both cameras are there again. */
bool plugIn()
{
    return VividDevice::plug() && VividDevice::settle() && !VividDevice::nodeOf(1).empty();
}

} // namespace

/*! The tool, so a plain QCamera over the bridge and the plugin, on a real V4L2 device. */
class TestV4l2Preview : public QObject
{
    Q_OBJECT
private slots:
    void list_showsTheDevices();
    void doctor_tellsOfEachNode();
    void doctor_namesWhoHasTheDevice();
    void watch_tellsOfDevicesThatComeAndGo();
    void preview_showsTheDevicesPicture();
    void preview_tellsOfTheUnpluggedDevice();
    void preview_namesWhatIsOffered_whenAskedForSomethingElse();
};

void TestV4l2Preview::list_showsTheDevices()
{
    const Result result = run({ "list", "--json" });
    QVERIFY2(result.exitCode == 0, result.errors);
    const QByteArray text = result.output;
    QVERIFY2(text.contains("v4l2:platform-vivid.0:vivid-000-vid-cap") &&
                     text.contains("v4l2:platform-vivid.0:vivid-001-vid-cap"),
             text);
    QVERIFY2(!text.contains("vid-out") && !text.contains("meta"), text);
}

void TestV4l2Preview::doctor_tellsOfEachNode()
{
    const Result result = run({ "doctor", "--cameras" });
    QVERIFY2(result.exitCode == 0, result.errors);
    QCOMPARE(result.output.count(": offered; captures "), 2);
    QVERIFY2(result.output.contains("output node"), result.output);
    QVERIFY2(result.output.contains("metadata node"), result.output);
}

void TestV4l2Preview::doctor_namesWhoHasTheDevice()
{
    const QString node = QString::fromStdString(VividDevice::nodeOf(0));
    QProcess other;
    other.start("v4l2-ctl", { "--device", node, "--stream-mmap" });
    QTRY_VERIFY_WITH_TIMEOUT(isCapturing(other), 30000);
    const Result result = run({ "doctor", "--cameras" });
    QVERIFY2(result.exitCode == 0, result.errors);
    const QString line = QStringLiteral("does not open: it is in use by \"v4l2-ctl\" (process %1); "
                                        "stop it there first")
                                 .arg(other.processId());
    QVERIFY2(QString(result.output).contains(line), result.output);
    QCOMPARE(result.output.count(": offered; captures "), 1);
    other.kill();
    QVERIFY(other.waitForFinished());
}

void TestV4l2Preview::watch_tellsOfDevicesThatComeAndGo()
{
    QProcess tool;
    tool.start(QStringLiteral(OCELLE_TOOL), { "watch" });
    QByteArray output;
    const auto tells = [&](const QString &event) {
        output += tool.readAllStandardOutput();
        return QString(output).contains(event + ' ' + Id + "  vivid");
    };
    QTRY_VERIFY_WITH_TIMEOUT(tells("present"), 60000);
    QVERIFY(VividDevice::unplug());
    QTRY_VERIFY_WITH_TIMEOUT(tells("removed"), 30000);
    QVERIFY(plugIn());
    QTRY_VERIFY_WITH_TIMEOUT(tells("added"), 30000);
    tool.terminate();
    QVERIFY(tool.waitForFinished());
    QCOMPARE(tool.exitCode(), 0);
    QCOMPARE(output.count("vivid-000-vid-cap"), 3);
}

void TestV4l2Preview::preview_showsTheDevicesPicture()
{
    QTemporaryDir folder;
    const QString file = folder.filePath("picture.png");
    const Result result = run({ "preview", Id, "--size", "640x360", "--fps", "30", "--frames", "20",
                                "--no-window", "--json", "--snapshot", file });
    QVERIFY2(result.exitCode == 0, result.errors);
    const QJsonObject report = QJsonDocument::fromJson(result.output).object();
    QVERIFY2(report.value("presented").toInt() >= 20, result.output);
    const QJsonObject device = report.value("device").toObject();
    QCOMPARE(device.value("format").toString(), QString("NV12"));
    QCOMPARE(device.value("negotiated_fps").toDouble(), 30.0);
    QVERIFY(device.value("measured_fps").toDouble() > 5);

    const QImage picture(file);
    QCOMPARE(picture.size(), QSize(640, 360));
    // Eight bars: white, yellow, cyan, green, magenta, red, blue, black.
    const int bars[8] = { 7, 6, 3, 2, 5, 4, 1, 0 }; // red, green, blue as bits
    for (int bar = 0; bar < 8; ++bar) {
        const QRgb colour = picture.pixel(40 + 80 * bar, 340);
        const int parts[] = { qBlue(colour), qGreen(colour), qRed(colour) };
        const int bits[] = { bars[bar] & 1, bars[bar] >> 1 & 1, bars[bar] >> 2 & 1 };
        for (int part = 0; part < 3; ++part)
            QVERIFY2(bits[part] ? parts[part] > 120 : parts[part] < 80,
                     qPrintable(QStringLiteral("bar %1 is %2").arg(bar).arg(colour, 0, 16)));
    }
}

void TestV4l2Preview::preview_tellsOfTheUnpluggedDevice()
{
    QProcess tool;
    tool.start(QStringLiteral(OCELLE_TOOL), { "preview", Id, "--size", "640x360", "--no-window" });
    QTRY_VERIFY_WITH_TIMEOUT(isCapturing(tool), 60000);
    QVERIFY(VividDevice::unplug());
    QVERIFY(tool.waitForFinished(30000));
    QVERIFY(plugIn());
    const QByteArray errors = tool.readAllStandardError();
    QVERIFY(tool.exitStatus() == QProcess::NormalExit && tool.exitCode() != 0);
    QVERIFY2(errors.contains("unplugged") && errors.contains("vivid"), errors);
}

void TestV4l2Preview::preview_namesWhatIsOffered_whenAskedForSomethingElse()
{
    const Result result =
            run({ "preview", Id, "--size", "641x361", "--frames", "1", "--no-window" });
    QVERIFY(result.exitCode != 0);
    QVERIFY2(result.errors.contains("640x360"), result.errors);
}

QTEST_GUILESS_MAIN(TestV4l2Preview)
#include "tst_v4l2preview.moc"
