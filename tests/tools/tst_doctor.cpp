// SPDX-License-Identifier: BSD-3-Clause
#include "doctor/environmentexamination.h"
#include "doctor/libraryexamination.h"
#include "doctor/platformexamination.h"

#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

using namespace Doctor;
using Veltra::Ocelle::CameraNode;
using Veltra::Ocelle::CodecType;

namespace {

QStringList problemsIn(const Findings &findings)
{
    QStringList texts;
    for (const Finding &finding : findings) {
        if (finding.level == Finding::Level::Problem)
            texts.append(finding.text);
    }
    return texts;
}

bool isAdviceGiven(const Findings &findings)
{
    return std::all_of(findings.begin(), findings.end(), [](const Finding &finding) {
        return finding.advice.isEmpty() == (finding.level == Finding::Level::Good);
    });
}

} // namespace

/*! What the doctor makes of what it is shown. */
class DoctorTest : public QObject
{
    Q_OBJECT
private slots:
    void environment_isJudged_data();
    void environment_isJudged();
    void nodeWithoutPermission_isAProblem();
    void nodes_areNotes_whereTheyAreNotNeeded();
    void missingLibrary_isNamed();
    void missingCodec_isNamed();
    void findings_arePrinted();
};

void DoctorTest::environment_isJudged_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("level"); // of the finding
    QTest::addColumn<QString>("words");
    const auto row = [](const char *title, const char *name, const char *value, const char *level,
                        const char *words) {
        QTest::newRow(title) << QString(name) << QString(value) << QString(level)
                             << QString::fromUtf8(words);
    };
    row("nothing", "UNRELATED", "1", "good", "nothing in it");
    row("cameras", "OCELLE_CAMERAS", "v4l2,pattern", "good", "nothing in it");
    row("no cameras", "OCELLE_CAMERAS", " ", "problem", "is empty");
    row("wrong entry", "OCELLE_CAMERAS", "v4l2,webcam", "problem", "\"webcam\" is not a source");
    row("missing file", "OCELLE_CAMERAS", "v4l2,file:/no/such", "problem",
        "\"/no/such\" cannot be read: No such file");
    row("missing folder", "OCELLE_CAMERAS", "dir:/no/such", "problem", "cannot be read");
    row("no webcams", "OCELLE_CAMERAS", "pattern", "note", "leaves out webcams");
    row("no webcams, in v4l2", "OCELLE_CAMERAS", "dir:/v4l2/..", "note", "leaves out webcams");
    row("format", "OCELLE_PATTERN_FORMAT", "rgb", "problem", "OCELLE_PATTERN_FORMAT=rgb");
    row("watchdog", "OCELLE_V4L2_WATCHDOG", "no", "problem", "OCELLE_V4L2_WATCHDOG=no");
    row("threads", "OCELLE_DECODER_THREADS", "4", "problem", "OCELLE_DECODER_THREADS=4");
    row("output", "OCELLE_DECODER_OUTPUT", "gl", "problem", "OCELLE_DECODER_OUTPUT=gl");
    row("output, right", "OCELLE_DECODER_OUTPUT", "ycbcr", "good", "nothing in it");
    row("plugin path", "QT_PLUGIN_PATH", "/tmp:/no/such", "problem",
        "/no/such, which is no folder");
    row("preference", "QT_MULTIMEDIA_PREFERRED_PLUGINS", "gst", "note", "prefers other plugins");
    row("our preference", "QT_MULTIMEDIA_PREFERRED_PLUGINS", "ocelle", "good", "nothing in it");
    row("silenced", "QT_LOGGING_RULES", "veltra.*=false", "note", "silences our errors");
    row("not silenced", "QT_LOGGING_RULES", "*.debug=false", "good", "nothing in it");
    row("runtime folder", "XDG_RUNTIME_DIR", "/no/such", "note", "is no folder of this user");
    row("no runtime folder", "XDG_RUNTIME_DIR", "", "note", "is not set");
}

void DoctorTest::environment_isJudged()
{
    QFETCH(QString, name);
    QFETCH(QString, value);
    QFETCH(QString, words);
    const QTemporaryDir runtime;
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime.path());
    environment.insert(name, value);
    const Findings findings = examineEnvironment(environment);
    QCOMPARE(findings.size(), 1);
    QVERIFY2(findings.first().text.contains(words), qPrintable(findings.first().text));
    QTEST(toJson(findings).first().toObject().value(QStringLiteral("level")).toString(), "level");
    QVERIFY(isAdviceGiven(findings));
}

void DoctorTest::nodeWithoutPermission_isAProblem()
{
    const std::vector<CameraNode> nodes {
        { "/dev/video0", "Webcam", "", false,
          "Webcam: permission denied; members of the group \"video\" may use it" },
        { "/dev/video1", "Webcam", "", false, "not offered: it is for metadata" },
    };
    const Findings findings = judgeNodes(nodes, NodeUse::Welcome);
    const QStringList problems = problemsIn(findings);
    QCOMPARE(problems.size(), 1);
    QVERIFY(problems.first().startsWith(QLatin1String("/dev/video0")));
    QVERIFY(problems.first().contains(QLatin1String("permission denied")));
    QVERIFY(findings.first().advice.startsWith(QLatin1String("adduser USER video")));
    QVERIFY(isAdviceGiven(findings));
    // And that there is none left.
    QCOMPARE(problemsIn(judgeNodes(nodes, NodeUse::Needed)).size(), 2);
}

void DoctorTest::nodes_areNotes_whereTheyAreNotNeeded()
{
    QVERIFY(!hasProblem(judgeNodes({}, NodeUse::Welcome)));
    QVERIFY(!hasProblem(judgeNodes({}, NodeUse::LeftOut)));
    QCOMPARE(problemsIn(judgeNodes({}, NodeUse::Needed)), QStringList { "there is no video node" });
    const std::vector<CameraNode> closed {
        { "/dev/video0", "Webcam", "", false, "Webcam: permission denied" },
    };
    QVERIFY(!hasProblem(judgeNodes(closed, NodeUse::LeftOut)));
    const std::vector<CameraNode> good { { "/dev/video0", "Webcam", "v4l2:a", true, "offered" } };
    QVERIFY(!hasProblem(judgeNodes(good, NodeUse::Needed)));
}

void DoctorTest::missingLibrary_isNamed()
{
    const QByteArray output = "\tlinux-vdso.so.1 (0x00007ffd)\n"
                              "\tlibocelle-qt5.so.0 => not found\n"
                              "\tlibocelle.so.0 => /usr/lib/libocelle.so.0 (0x00007f00)\n"
                              "\tlibfoo.so.1 => not found\n";
    const Findings findings = judgeLibraries(QStringLiteral("/p/lib.so"), output);
    QCOMPARE(problemsIn(findings),
             (QStringList { "libocelle-qt5.so.0, which /p/lib.so needs, is not found",
                            "libfoo.so.1, which /p/lib.so needs, is not found" }));
    QVERIFY(isAdviceGiven(findings));
    QCOMPARE(findings.last().text, QStringLiteral("/usr/lib/libocelle.so.0"));
}

void DoctorTest::missingCodec_isNamed()
{
    const Findings findings = judgeCodecs({ { CodecType::VP8, true, "a", 0, 1, false },
                                            { CodecType::VP8, false, "b", 0, 1, false },
                                            { CodecType::H264, false, "c", 0, 1, false } });
    QCOMPARE(findings.first().text, QStringLiteral("h264 decoder, vp8 encoder, vp8 decoder"));
    QCOMPARE(findings.size(), 1 + 5);
    QCOMPARE(findings.at(1).text, QStringLiteral("there is no h264 encoder"));
    QVERIFY(findings.at(1).advice.contains(QLatin1String("libx264")));
    QVERIFY(isAdviceGiven(findings));
}

void DoctorTest::findings_arePrinted()
{
    const Finding finding { Finding::Level::Problem, "plugins", "one is missing", "install it" };
    QCOMPARE(toText(finding), QStringLiteral("problem  plugins      one is missing\n"
                                             "                      -> install it"));
}

QTEST_GUILESS_MAIN(DoctorTest)
#include "tst_doctor.moc"
