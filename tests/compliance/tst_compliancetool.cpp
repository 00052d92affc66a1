// SPDX-License-Identifier: BSD-3-Clause
#include "fault.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

Q_DECLARE_METATYPE(Fault)

namespace {

constexpr int Patience = 100000; // ms

/*! The tool with cameras of the test's choosing. */
class Tool
{
public:
    Tool(const QStringList &arguments, const QString &cameras,
         QProcessEnvironment environment = QProcessEnvironment::systemEnvironment())
    {
        environment.insert(QStringLiteral("OCELLE_CAMERAS"), cameras);
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(OCELLE_TOOL), arguments);
    }
    int finish()
    {
        if (process.state() != QProcess::NotRunning && !process.waitForFinished(Patience))
            return -1;
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    QProcess process;
};

} // namespace

/*! "ocelle compliance", with the stand-in's own libraries. */
class ComplianceToolTest : public QObject
{
    Q_OBJECT
private slots:
    void standInKeepsTheContract_data();
    void standInKeepsTheContract();
    void report_isWellFormed();
    void hotPlug_isSeen_whenAFileComesAndGoes();
    void otherLibraries_areChecked_data();
    void otherLibraries_areChecked();
    void wrongChoices_areExplained_data();
    void wrongChoices_areExplained();
    void wrongChoice_leavesTheReportThatIsThere();
    void otherLibraries_areRunOn_data();
    void otherLibraries_areRunOn();
};

void ComplianceToolTest::standInKeepsTheContract_data()
{
    QTest::addColumn<QStringList>("choice");
    QTest::addColumn<int>("fewest"); // checks that pass
    QTest::newRow("cameras") << QStringList { "--only", "camera*", "--device", "pattern:back" }
                             << 8;
    QTest::newRow("discovery") << QStringList { "--only", "platform.discovery" } << 1;
    QTest::newRow("codecs") << QStringList { "--only", "codecs.*" } << 3;
    QTest::newRow("encoders") << QStringList { "--only", "encoder.*" } << 45;
    QTest::newRow("decoders") << QStringList { "--only", "decoder.*" } << 33;
}

void ComplianceToolTest::standInKeepsTheContract()
{
    QFETCH(QStringList, choice);
    QFETCH(int, fewest);
    Tool tool(QStringList { "compliance", "--json" } + choice, QStringLiteral("pattern"));
    const int exitCode = tool.finish();
    const QByteArray output = tool.process.readAllStandardOutput();
    QVERIFY2(exitCode == 0, output + tool.process.readAllStandardError());
    const QJsonObject report = QJsonDocument::fromJson(output).object();
    QVERIFY2(report.value(QStringLiteral("passed")).toInt() >= fewest, output);
    QCOMPARE(report.value(QStringLiteral("failed")).toInt(-1), 0);
    for (const QJsonValue &value : report.value(QStringLiteral("checks")).toArray()) {
        const QJsonObject check = value.toObject();
        const bool mayBeSkipped =
                check.value(QStringLiteral("check")) == QStringLiteral("cameras.hotplug");
        QVERIFY2(mayBeSkipped || check.value(QStringLiteral("result")) == QStringLiteral("pass"),
                 output);
    }
}

void ComplianceToolTest::report_isWellFormed()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("report.xml"));
    Tool tool({ "compliance", "--only", "cameras.*", "--junit", file }, QStringLiteral("pattern"));
    QCOMPARE(tool.finish(), 0);
    const QByteArray output = tool.process.readAllStandardOutput();
    QVERIFY2(output.contains("pass  cameras.listing     cameras: 2\n"), output);
    QVERIFY2(output.contains("skip  cameras.hotplug     run with --hotplug SECONDS"), output);
    QVERIFY2(output.endsWith("4 checks: 3 passed, 0 failed, 1 skipped\n"), output);
    QFile report(file);
    QVERIFY(report.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&report);
    QVERIFY(xml.readNextStartElement());
    QCOMPARE(xml.name().toString(), QStringLiteral("testsuite"));
    QCOMPARE(xml.attributes().value(QStringLiteral("tests")).toInt(), 4);
    QCOMPARE(xml.attributes().value(QStringLiteral("failures")).toInt(), 0);
    int cases = 0;
    while (xml.readNextStartElement()) {
        QCOMPARE(xml.name().toString(), QStringLiteral("testcase"));
        ++cases;
        xml.skipCurrentElement();
    }
    QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
    QCOMPARE(cases, 4);
}

void ComplianceToolTest::hotPlug_isSeen_whenAFileComesAndGoes()
{
    const QTemporaryDir folder;
    const QString video = folder.filePath(QStringLiteral("video.mkv"));
    Tool recorder({ "record", "--camera", "pattern:back", "--size", "320x240", "--codec", "vp8",
                    "--seconds", "0.5", video },
                  QStringLiteral("pattern"));
    QCOMPARE(recorder.finish(), 0);
    const QString cameras = folder.filePath(QStringLiteral("cameras"));
    QVERIFY(QDir().mkdir(cameras));
    Tool tool({ "compliance", "--only", "cameras.hotplug", "--hotplug", "60" },
              QStringLiteral("dir:") + cameras);
    // As somebody who plugs a camera in and out until it was noticed.
    const QString file = cameras + QStringLiteral("/video.mkv");
    const QDeadlineTimer deadline(Patience);
    bool isThere = false;
    while (!tool.process.waitForFinished(1000) && !deadline.hasExpired()) {
        isThere = !isThere;
        QVERIFY(isThere ? QFile::rename(video, file) : QFile::rename(file, video));
    }
    const QByteArray output = tool.process.readAllStandardOutput();
    QVERIFY2(tool.finish() == 0, output + tool.process.readAllStandardError());
    QVERIFY2(output.contains("pass  cameras.hotplug"), output);
}

void ComplianceToolTest::otherLibraries_areChecked_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("good") << Fault::None << 0 << QByteArray("pass  camera.open         one\n");
    QTest::newRow("bad") << Fault::CameraHasNoFormat << 1
                         << QByteArray("fail  camera.open         one  it lists no pixel format\n");
    QTest::newRow("hanging") << Fault::ManagerHangs << 1
                             << QByteArray("fail  platform.discovery  getNumberOfCameras() did not "
                                           "return within 10 s\nskip  camera.open");
}

// The program as it is, on libraries of the same names that are not the stand-in's.
void ComplianceToolTest::otherLibraries_areChecked()
{
    QFETCH(Fault, fault);
    QFETCH(QByteArray, line);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_LIBRARY_PATH"), QStringLiteral(OCELLE_DEVICE_LIBRARIES));
    environment.insert(QStringLiteral("OCELLE_DOUBLE_FAULT"), QString::number(int(fault)));
    Tool tool({ "compliance", "--only", "camera.open" }, QString(), environment);
    const int exitCode = tool.finish();
    const QByteArray output = tool.process.readAllStandardOutput();
    QVERIFY2(output.contains(line), output + tool.process.readAllStandardError());
    QTEST(exitCode, "exitCode");
}

void ComplianceToolTest::wrongChoices_areExplained_data()
{
    QTest::addColumn<QStringList>("choice");
    QTest::addColumn<QByteArray>("words");
    QTest::newRow("check") << QStringList { "--only", "camera.nonsense" }
                           << QByteArray("there is no check \"camera.nonsense\"");
    QTest::newRow("device") << QStringList { "--device", "nobody" }
                            << QByteArray("there is no device \"nobody\"");
    QTest::newRow("check of other devices")
            << QStringList { "--only", "encoder.keyframe", "--device", "pattern:back" }
            << QByteArray("no check \"encoder.keyframe\" is made on device \"pattern:back\"");
    QTest::newRow("seconds") << QStringList { "--hotplug", "0" } << QByteArray("--hotplug");
    QTest::newRow("folder") << QStringList { "--junit", "/no/report.xml" } << QByteArray("/no");
}

void ComplianceToolTest::wrongChoices_areExplained()
{
    QFETCH(QStringList, choice);
    QFETCH(QByteArray, words);
    Tool tool(QStringList { "compliance" } + choice, QStringLiteral("pattern"));
    QCOMPARE(tool.finish(), 2);
    const QByteArray errors = tool.process.readAllStandardError();
    QVERIFY2(errors.contains(words), errors);
    QVERIFY2(errors.count('\n') == 1, errors);
    QCOMPARE(tool.process.readAllStandardOutput(), QByteArray());
}

void ComplianceToolTest::wrongChoice_leavesTheReportThatIsThere()
{
    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("report.xml"));
    QFile report(name);
    QVERIFY(report.open(QIODevice::ReadWrite));
    QCOMPARE(report.write("of before"), qint64(9));
    QVERIFY(report.flush());
    Tool tool({ "compliance", "--device", "nobody", "--junit", name }, QStringLiteral("pattern"));
    QCOMPARE(tool.finish(), 2);
    QFile left(name);
    QVERIFY(left.open(QIODevice::ReadOnly));
    QCOMPARE(left.readAll(), QByteArray("of before"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList { "report.xml" });
}

void ComplianceToolTest::otherLibraries_areRunOn_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("words"); // of the output
    QTest::newRow("compliance") << QStringList { "compliance", "--only", "camera.open" } << 0
                                << QByteArray("pass  camera.open         two\n");
    QTest::newRow("list") << QStringList { "list" } << 0 << QByteArray("h264");
    QTest::newRow("doctor") << QStringList { "doctor" } << 0
                            << QByteArray("note     devices      video nodes are not examined");
    QTest::newRow("doctor, choice") << QStringList { "doctor" } << 0
                                    << QByteArray("note     environment  OCELLE_CAMERAS is not");
    QTest::newRow("doctor, nodes") << QStringList { "doctor", "--cameras" } << 1 << QByteArray();
    QTest::newRow("preview") << QStringList { "preview", "one", "--frames", "5", "--no-window" }
                             << 0 << QByteArray("presented 5;");
}

// With all that the program refers to looked up as it starts.
void ComplianceToolTest::otherLibraries_areRunOn()
{
    QFETCH(QStringList, command);
    QFETCH(QByteArray, words);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_LIBRARY_PATH"), QStringLiteral(OCELLE_DEVICE_LIBRARIES));
    environment.insert(QStringLiteral("LD_BIND_NOW"), QStringLiteral("1"));
    environment.insert(QStringLiteral("QT_PLUGIN_PATH"), QStringLiteral(OCELLE_PLUGINS));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    Tool tool(command, QString(), environment);
    const int exitCode = tool.finish();
    const QByteArray output = tool.process.readAllStandardOutput();
    const QByteArray errors = tool.process.readAllStandardError();
    QVERIFY2(output.contains(words), output + errors);
    QVERIFY2(!errors.contains("symbol lookup error"), errors);
    QTEST(exitCode, "exitCode");
}

QTEST_GUILESS_MAIN(ComplianceToolTest)
#include "tst_compliancetool.moc"
