// SPDX-License-Identifier: BSD-3-Clause
#include "toolprocess.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

/*! "ocelle list" and the program's arguments, with the real plugins. */
class ListToolTest : public QObject
{
    Q_OBJECT
private slots:
    void list_showsThePatternCameras();
    void list_tellsEverythingInJson();
    void list_showsTheCodecsWithTheirProperties();
    void list_hasNoCamera_whenThereIsNone();
    void list_showsTheOthers_whenOneEntryIsWrong();
    void list_leavesOutTheCamerasOfOtherPlugins();
    void commands_tellOfAMissingPlugin_data();
    void commands_tellOfAMissingPlugin();
    void pluginOfTheEnvironment_comesFirst();
    void lostOutput_isTold_data();
    void lostOutput_isTold();
    void closedOutput_isTold_data();
    void closedOutput_isTold();
    void wrongArguments_areExplained();
};

void ListToolTest::list_showsThePatternCameras()
{
    const ToolResult result = ToolProcess::run({ QStringLiteral("list") });
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.output.contains("pattern:back"));
    QVERIFY(result.output.contains("pattern:front"));
    QVERIFY(result.output.contains("position front"));
    QVERIFY(result.output.contains("NV12"));
    QVERIFY(result.output.contains("1920x1080  at 15, 30, 60 fps"));
    QCOMPARE(result.errors, QByteArray());
}

void ListToolTest::list_tellsEverythingInJson()
{
    const ToolResult result =
            ToolProcess::run({ QStringLiteral("list"), QStringLiteral("--json") });
    QCOMPARE(result.exitCode, 0);
    const QJsonObject all = QJsonDocument::fromJson(result.output).object();
    const QJsonArray cameras = all.value(QStringLiteral("cameras")).toArray();
    QCOMPARE(cameras.size(), 2);
    for (const QJsonValue &value : cameras) {
        const QJsonObject camera = value.toObject();
        const bool front = camera.value(QStringLiteral("id")) == QStringLiteral("pattern:front");
        QVERIFY(front || camera.value(QStringLiteral("id")) == QStringLiteral("pattern:back"));
        QVERIFY(!camera.value(QStringLiteral("name")).toString().isEmpty());
        QCOMPARE(camera.value(QStringLiteral("position")).toString(),
                 front ? QStringLiteral("front") : QStringLiteral("back"));
        QCOMPARE(camera.value(QStringLiteral("default")).toBool(), front);
        QCOMPARE(camera.value(QStringLiteral("orientation")).toInt(-1), 0);
        const QJsonArray formats = camera.value(QStringLiteral("formats")).toArray();
        QVERIFY(formats.contains(QStringLiteral("NV12")));
        QVERIFY(formats.contains(QStringLiteral("YUV420P")));
        const QJsonArray sizes = camera.value(QStringLiteral("sizes")).toArray();
        QCOMPARE(sizes.size(), 4);
        QCOMPARE(sizes.first().toObject(),
                 (QJsonObject { { QStringLiteral("width"), 320 },
                                { QStringLiteral("height"), 240 },
                                { QStringLiteral("rates"), QJsonArray { 15, 30, 60 } } }));
    }
}

void ListToolTest::list_showsTheCodecsWithTheirProperties()
{
    const ToolResult text = ToolProcess::run({ QStringLiteral("list") });
    const ToolResult json = ToolProcess::run({ QStringLiteral("list"), QStringLiteral("--json") });
    QCOMPARE(json.exitCode, 0);
    const QJsonObject all = QJsonDocument::fromJson(json.output).object();
    QVERIFY(all.value(QStringLiteral("decoders")).isArray());
    QStringList types;
    for (const QJsonValue &value : all.value(QStringLiteral("encoders")).toArray()) {
        const QJsonObject encoder = value.toObject();
        const QString id = encoder.value(QStringLiteral("id")).toString();
        const QString type = encoder.value(QStringLiteral("type")).toString();
        const int instances = encoder.value(QStringLiteral("max_instances")).toInt();
        const bool isHardware = encoder.value(QStringLiteral("hardware")).toBool();
        QVERIFY(!id.isEmpty());
        QVERIFY(instances > 0);
        if (!isHardware)
            types.append(type);
        const QString line =
                QStringLiteral("%1  encoder for %2\n    %3, at most %4 at once\n")
                        .arg(id, type,
                             isHardware ? QStringLiteral("hardware") : QStringLiteral("software"))
                        .arg(instances);
        QVERIFY2(text.output.contains(line.toUtf8()), text.output.constData());
    }
    types.sort();
    QCOMPARE(types, (QStringList { QStringLiteral("video/h264"), QStringLiteral("video/h265"),
                                   QStringLiteral("video/vp8"), QStringLiteral("video/vp9") }));
}

void ListToolTest::list_hasNoCamera_whenThereIsNone()
{
    const QTemporaryDir folder;
    const QString cameras = QStringLiteral("dir:") + folder.path();
    const ToolResult text = ToolProcess::run({ QStringLiteral("list") }, cameras);
    QCOMPARE(text.exitCode, 0);
    QVERIFY(!text.output.contains("position"));
    QVERIFY(text.errors.contains("There are no cameras."));
    const ToolResult json =
            ToolProcess::run({ QStringLiteral("list"), QStringLiteral("--json") }, cameras);
    QCOMPARE(json.exitCode, 0);
    const QJsonValue listed =
            QJsonDocument::fromJson(json.output).object().value(QStringLiteral("cameras"));
    QVERIFY(listed.isArray());
    QVERIFY(listed.toArray().isEmpty());
}

void ListToolTest::list_showsTheOthers_whenOneEntryIsWrong()
{
    const ToolResult result =
            ToolProcess::run({ QStringLiteral("list") }, QStringLiteral("nonsense,pattern"));
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.output.contains("pattern:back"));
    QVERIFY(result.errors.contains("nonsense"));
}

void ListToolTest::list_leavesOutTheCamerasOfOtherPlugins()
{
    const QString plugins = QStringLiteral(OCELLE_OTHER_PLUGINS);
    const auto run = [&plugins](const QStringList &arguments) {
        return ToolProcess(arguments, QStringLiteral("pattern"), plugins).finish();
    };
    const ToolResult listed = run({ QStringLiteral("list") });
    QVERIFY2(listed.errors.contains("asked for other cameras"), listed.errors);
    QVERIFY2(!listed.output.contains("other"), listed.output);
    QVERIFY(listed.output.contains("pattern:back") && listed.output.contains("pattern:front"));
    QCOMPARE(listed.exitCode, 0);

    const ToolResult previewed = run({ QStringLiteral("preview"), QStringLiteral("/dev/other"),
                                       QStringLiteral("--frames"), QStringLiteral("1") });
    QVERIFY(previewed.exitCode > 0);
    QVERIFY2(previewed.errors.contains("there is no camera \"/dev/other\""), previewed.errors);
}

void ListToolTest::commands_tellOfAMissingPlugin_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("list") << QStringList { "list" };
    QTest::newRow("watch") << QStringList { "watch" };
    QTest::newRow("preview") << QStringList { "preview", "pattern:back", "--frames", "1" };
    QTest::newRow("record") << QStringList { "record",   "--camera",  "pattern:back",
                                             "none.mkv", "--seconds", "0.1" };
}

// The program finds its plugins from where it is.
void ListToolTest::commands_tellOfAMissingPlugin()
{
    QFETCH(QStringList, arguments);
    const QTemporaryDir folder;
    const QString tool = folder.filePath(QStringLiteral("ocelle"));
    QVERIFY(QFile::copy(QStringLiteral(OCELLE_TOOL), tool));
    QVERIFY(QFile::copy(QStringLiteral(OCELLE_COMMANDS),
                        folder.filePath(QStringLiteral("ocelle-commands.so"))));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("QT_PLUGIN_PATH"));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder.path());
    process.start(tool, arguments);
    QVERIFY(process.waitForFinished());
    QVERIFY(process.exitCode() > 0);
    const QByteArray errors = process.readAllStandardError();
    QVERIFY2(errors.contains("there is no plugin libocellebackend.so in /"), errors);
}

void ListToolTest::pluginOfTheEnvironment_comesFirst()
{
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("mediaservice")));
    const QString path = folder.filePath(QStringLiteral("mediaservice/libocellebackend.so"));
    QFile broken(path);
    QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("no plugin") > 0);
    broken.close();
    const ToolResult result = ToolProcess(QStringList { QStringLiteral("list") },
                                          QStringLiteral("pattern"), folder.path())
                                      .finish();
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains(path.toUtf8()), result.errors);
}

void ListToolTest::lostOutput_isTold_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("list") << QStringList { "list" };
    QTest::newRow("help") << QStringList { "--help" };
    QTest::newRow("help of a command") << QStringList { "record", "--help" };
    QTest::newRow("version") << QStringList { "--version" };
}

void ListToolTest::lostOutput_isTold()
{
    QFETCH(QStringList, arguments);
    QProcess process;
    process.setStandardOutputFile(QStringLiteral("/dev/full"));
    process.start(QStringLiteral(OCELLE_TOOL), arguments);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 1);
    const QByteArray errors = process.readAllStandardError();
    QCOMPARE(errors.count("standard output cannot be written to: No space left on device\n"), 1);
}

void ListToolTest::closedOutput_isTold_data()
{
    lostOutput_isTold_data();
}

// Else what is opened first would be taken for it.
void ListToolTest::closedOutput_isTold()
{
    QFETCH(QStringList, arguments);
    QProcess shell;
    shell.start(QStringLiteral("sh"),
                QStringList { "-c", "exec \"$@\" >&-", "-", OCELLE_TOOL } + arguments);
    QVERIFY(shell.waitForFinished());
    QCOMPARE(shell.exitCode(), 1);
    QCOMPARE(shell.readAllStandardError(),
             QByteArray("ocelle: standard output cannot be written to: Bad file descriptor\n"));
}

void ListToolTest::wrongArguments_areExplained()
{
    const ToolResult unknown = ToolProcess::run({ QStringLiteral("lst") });
    QCOMPARE(unknown.exitCode, 2);
    QVERIFY(unknown.errors.contains("there is no command \"lst\""));
    const ToolResult size =
            ToolProcess::run({ QStringLiteral("preview"), QStringLiteral("pattern:back"),
                               QStringLiteral("--size"), QStringLiteral("big") });
    QCOMPARE(size.exitCode, 2);
    QVERIFY(size.errors.contains("\"big\" is not a size"));
    const ToolResult help = ToolProcess::run({ QStringLiteral("--help") });
    QCOMPARE(help.exitCode, 0);
    for (const char *word :
         { "list", "watch", "preview", "record", "encode", "OCELLE_CAMERAS", "Exit codes" })
        QVERIFY(help.output.contains(word));
}

QTEST_GUILESS_MAIN(ListToolTest)
#include "tst_listtool.moc"
