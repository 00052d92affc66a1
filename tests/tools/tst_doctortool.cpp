// SPDX-License-Identifier: BSD-3-Clause
#include "toolprocess.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

namespace {

/*! A folder as QT_PLUGIN_PATH names it. */
class Plugins
{
public:
    Plugins() { QVERIFY(QDir(m_dir.path()).mkdir(QStringLiteral("mediaservice"))); }

    void add(const QString &file, const QString &name)
    {
        QVERIFY2(QFile::copy(file, place(name)), qPrintable(file));
    }
    void write(const QString &name, const QByteArray &bytes)
    {
        QFile file(place(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    QString path() const { return m_dir.path(); }

private:
    QString place(const QString &name) const
    {
        return m_dir.filePath(QStringLiteral("mediaservice/") + name);
    }

    QTemporaryDir m_dir;
};

const QString &backend()
{
    static const QString name = QStringLiteral("libocellebackend.so");
    return name;
}

const QString &bridge()
{
    static const QString name = QStringLiteral("libocellebridge.so");
    return name;
}

QString built(const QString &name)
{
    return QStringLiteral(OCELLE_PLUGINS "/mediaservice/") + name;
}

ToolResult examine(const QString &plugins, const QStringList &arguments = {},
                   const QString &cameras = QStringLiteral("pattern"))
{
    return ToolProcess(QStringList { QStringLiteral("doctor") } + arguments, cameras, plugins)
            .finish();
}

} // namespace

/*! "ocelle doctor" on setups that are whole and on broken ones. */
class DoctorToolTest : public QObject
{
    Q_OBJECT
private slots:
    void nothingIsToBeDone_whereAllIsWell();
    void missingPlugins_areToldWithTheWayOut();
    void bridgeAlone_isTold();
    void garbage_isTold();
    void otherPluginUnderOurName_isTold();
    void separatedPlugins_areTold();
    void brokenPlugin_isTold();
    void otherPluginThatComesFirst_isTold();
    void noCamera_isTold();
    void fileThatIsNoVideo_isTold();
    void folderThatMayNotBeRead_isTold();
    void findings_areJson();
    void program_startsWithoutThePlatform_data();
    void program_startsWithoutThePlatform();
};

void DoctorToolTest::nothingIsToBeDone_whereAllIsWell()
{
    const ToolResult result = examine(QStringLiteral(OCELLE_PLUGINS));
    QVERIFY2(result.exitCode == 0, result.output + result.errors);
    QVERIFY2(!result.output.contains("problem"), result.output);
    QVERIFY2(result.output.contains("a plain QCamera is served by ours"), result.output);
    QVERIFY2(result.output.contains("/libocelle.so.0"), result.output);
    QVERIFY2(result.output.contains("h264 decoder"), result.output);
}

void DoctorToolTest::missingPlugins_areToldWithTheWayOut()
{
    const Plugins empty;
    const ToolResult result = examine(empty.path());
    QCOMPARE(result.exitCode, 1);
    for (const QString &name : { backend(), bridge() })
        QVERIFY2(result.output.contains("problem  plugins      " + name.toUtf8() + " ("),
                 result.output);
    QVERIFY2(result.output.contains("-> set QT_PLUGIN_PATH=" OCELLE_PLUGINS), result.output);
}

void DoctorToolTest::bridgeAlone_isTold()
{
    Plugins plugins;
    plugins.add(built(bridge()), bridge());
    const ToolResult result = examine(plugins.path());
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.output.contains("problem  plugins      libocellebackend.so ("), result.output);
    QVERIFY2(!result.output.contains("problem  plugins      libocellebridge.so ("), result.output);
}

void DoctorToolTest::garbage_isTold()
{
    Plugins plugins;
    plugins.add(built(bridge()), bridge());
    plugins.write(backend(), QByteArray(5000, 'x'));
    const ToolResult result = examine(plugins.path());
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.output.contains("libocellebackend.so is no plugin that this Qt understands"),
             result.output);
}

void DoctorToolTest::otherPluginUnderOurName_isTold()
{
    Plugins plugins;
    plugins.add(built(backend()), backend());
    plugins.add(QStringLiteral(OCELLE_OTHER_PLUGINS "/mediaservice/libocelle-other-camera.so"),
                bridge());
    const ToolResult result = examine(plugins.path());
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.output.contains("its key is \"other-camera\" where \"ocelle-bridge\" is due"),
             result.output);
}

void DoctorToolTest::separatedPlugins_areTold()
{
    Plugins one;
    Plugins other;
    one.add(built(bridge()), bridge());
    other.add(built(backend()), backend());
    const ToolResult result = examine(one.path() + QLatin1Char(':') + other.path());
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.output.contains("put both into one folder"), result.output);
}

// Its metadata is whole, and what comes behind is not.
void DoctorToolTest::brokenPlugin_isTold()
{
    Plugins plugins;
    plugins.add(built(bridge()), bridge());
    QFile whole(built(backend()));
    QVERIFY(whole.open(QIODevice::ReadOnly));
    QByteArray bytes = whole.readAll();
    QVERIFY(bytes.contains("libocelle-qt5.so.0"));
    bytes.replace("libocelle-qt5.so.0", "libocelle-qt5.so.9");
    plugins.write(backend(), bytes);
    const ToolResult result = examine(plugins.path());
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.output.contains("problem  libraries    libocelle-qt5.so.9, which"),
             result.output);
    QVERIFY2(result.output.contains("LD_LIBRARY_PATH"), result.output);
}

void DoctorToolTest::otherPluginThatComesFirst_isTold()
{
    const ToolResult result = examine(QStringLiteral(OCELLE_OTHER_PLUGINS ":" OCELLE_PLUGINS));
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.output.contains("libocelle-other-camera.so (key other-camera) offers cameras"),
             result.output);
    QVERIFY2(result.output.contains("problem  choice"), result.output);
    QVERIFY2(result.output.contains("QT_MULTIMEDIA_PREFERRED_PLUGINS=ocelle"), result.output);
}

// As root, who may read all, the program is run without that right.
void DoctorToolTest::folderThatMayNotBeRead_isTold()
{
    QStringList command { QStringLiteral(OCELLE_TOOL), QStringLiteral("doctor") };
    if (geteuid() == 0) {
        const QString rights = QStringLiteral("-dac_override,-dac_read_search");
        const QStringList less { "setpriv", "--bounding-set", rights, "--inh-caps", rights };
        if (QProcess::execute(less.first(), less.mid(1) + QStringList { "true" }) != 0)
            QSKIP("root cannot give up its rights here");
        command = less + command;
    }
    const QTemporaryDir folder;
    const auto open = QFile::permissions(QStringLiteral("/"));
    const QString inner = folder.filePath(QStringLiteral("mediaservice"));
    QVERIFY(QDir().mkdir(inner));
    QVERIFY(QFile::setPermissions(inner, QFile::Permissions()));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_PLUGIN_PATH"), folder.path());
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(command.takeFirst(), command);
    const bool hasFinished = process.waitForFinished();
    QVERIFY(QFile::setPermissions(inner, open)); // else the folder could not go
    QVERIFY(hasFinished);
    QCOMPARE(process.exitCode(), 1);
    const QByteArray printed = process.readAllStandardOutput();
    QVERIFY2(printed.contains(inner.toUtf8() + " cannot be read"), printed);
    QVERIFY2(printed.contains("-> chmod a+rx " + inner.toUtf8() + "\n"), printed);
}

void DoctorToolTest::noCamera_isTold()
{
    const QTemporaryDir folder;
    const ToolResult result =
            examine(QStringLiteral(OCELLE_PLUGINS), {}, QStringLiteral("dir:") + folder.path());
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.output.contains("problem  cameras      the platform offers no camera"),
             result.output);
    QVERIFY2(result.output.contains("no camera came of dir:" + folder.path().toLocal8Bit()),
             result.output);
    QVERIFY2(result.output.contains("-> put video files into that folder"), result.output);
    QVERIFY2(!result.output.contains("problem  devices"), result.output); // none is asked for
}

void DoctorToolTest::fileThatIsNoVideo_isTold()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("a, b.mkv")));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("no video") > 0);
    file.close();
    const QString entry = QStringLiteral("file:") + folder.path() + QStringLiteral("/a\\, b.mkv");
    const ToolResult result = examine(QStringLiteral(OCELLE_PLUGINS), {}, entry);
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.output.contains("no camera came of " + entry.toLocal8Bit()), result.output);
    QVERIFY2(result.output.contains("-> name a video file"), result.output);
}

void DoctorToolTest::findings_areJson()
{
    const Plugins empty;
    const ToolResult result = examine(empty.path(), { QStringLiteral("--json") });
    QCOMPARE(result.exitCode, 1);
    const QJsonArray findings = QJsonDocument::fromJson(result.output).array();
    QVERIFY(!findings.isEmpty());
    const QJsonObject first = findings.first().toObject();
    QCOMPARE(first.value(QStringLiteral("level")).toString(), QStringLiteral("problem"));
    QCOMPARE(first.value(QStringLiteral("area")).toString(), QStringLiteral("plugins"));
    QVERIFY(!first.value(QStringLiteral("finding")).toString().isEmpty());
    QVERIFY(!first.value(QStringLiteral("advice")).toString().isEmpty());
}

void DoctorToolTest::program_startsWithoutThePlatform_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("output"); // what there is of it
    QTest::addColumn<QByteArray>("errors");
    const QByteArray missing = "libocelle.so.9: cannot open shared object file: No such file or "
                               "directory; ocelle doctor tells what is missing\n";
    QTest::newRow("doctor") << QStringList { "doctor" } << 1
                            << QByteArray("problem  libraries    libocelle.so.9, which ")
                            << QByteArray();
    QTest::newRow("advice") << QStringList { "doctor" } << 1
                            << QByteArray("-> install the platform's libraries") << QByteArray();
    QTest::newRow("doctor, JSON") << QStringList { "doctor", "--json" } << 1
                                  << QByteArray("\"level\": \"problem\"") << QByteArray();
    for (const char *option : { "-h", "--help", "--bogus", "--cameras" })
        QTest::newRow(option) << QStringList { "doctor", option } << 1 << QByteArray()
                              << "ocelle: " + missing;
    QTest::newRow("list") << QStringList { "list" } << 1 << QByteArray() << "ocelle: " + missing;
    QTest::newRow("nothing") << QStringList {} << 1 << QByteArray() << "ocelle: " + missing;
    QTest::newRow("version") << QStringList { "--version" } << 0 << QByteArray(OCELLE_VERSION "\n")
                             << QByteArray();
}

// As it lies on a device: its commands beside it, and a library that they need nowhere.
void DoctorToolTest::program_startsWithoutThePlatform()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, output);
    const QTemporaryDir folder;
    const QString program = folder.filePath(QStringLiteral("ocelle"));
    QVERIFY(QFile::copy(QStringLiteral(OCELLE_TOOL), program));
    QFile whole(QStringLiteral(OCELLE_COMMANDS));
    QVERIFY(whole.open(QIODevice::ReadOnly));
    QByteArray bytes = whole.readAll();
    QVERIFY(bytes.contains("libocelle.so.0"));
    bytes.replace("libocelle.so.0", "libocelle.so.9");
    QFile broken(folder.filePath(QStringLiteral("ocelle-commands.so")));
    QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write(bytes) == bytes.size());
    broken.close();
    QProcess process;
    process.start(program, arguments);
    QVERIFY(process.waitForFinished() && process.exitStatus() == QProcess::NormalExit);
    const QByteArray printed = process.readAllStandardOutput();
    QTEST(process.exitCode(), "exitCode");
    QTEST(process.readAllStandardError(), "errors");
    QVERIFY2(output.isEmpty() ? printed.isEmpty() : printed.contains(output), printed);
}

QTEST_GUILESS_MAIN(DoctorToolTest)
#include "tst_doctortool.moc"
