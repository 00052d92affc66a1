// SPDX-License-Identifier: BSD-3-Clause
#include "pluginfolder.h"

#include <QCamera>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibraryInfo>
#include <QPluginLoader>
#include <QPointer>
#include <QProcess>

namespace {

const char CameraKey[] = Q_MEDIASERVICE_CAMERA;

/*! Collects what is logged while it lives. */
class Log
{
public:
    Log()
    {
        lines.clear();
        m_previous = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &context,
                                               const QString &text) {
            lines.append(QString::fromLatin1(context.category) + QStringLiteral(": ") + text);
        });
    }
    ~Log() { qInstallMessageHandler(m_previous); }

    static QStringList lines;

private:
    QtMessageHandler m_previous;
};
QStringList Log::lines;

struct Choice
{
    int exitCode = -1;
    QStringList answers; // what the program found
    QString log;         // what it and Qt said
};

/*! Asks an ordinary camera application, in a process of its own, which camera it gets. */
Choice chooseCamera(const PluginFolder &folder, const QString &preferred,
                    const QStringList &arguments = {}, const QString &farewell = QString())
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("QT_PLUGIN_PATH"));
    environment.remove(QStringLiteral("QT_MULTIMEDIA_PREFERRED_PLUGINS"));
    if (!preferred.isEmpty())
        environment.insert(QStringLiteral("QT_MULTIMEDIA_PREFERRED_PLUGINS"), preferred);
    if (!farewell.isEmpty())
        environment.insert(QStringLiteral("OCELLE_TEST_FAREWELL"), farewell);
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(OCELLE_CAMERA_CHOICE), QStringList { folder.root() } + arguments);
    Choice choice;
    if (process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit)
        choice.exitCode = process.exitCode();
    const auto answers = QString::fromLocal8Bit(process.readAllStandardOutput());
    choice.answers = answers.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    choice.log = QString::fromLocal8Bit(process.readAllStandardError());
    return choice;
}

const QStringList &recordingCameras()
{
    static const QStringList cameras { QStringLiteral("camera left|The left one|2|90"),
                                       QStringLiteral("camera right|The right one|1|0") };
    return cameras;
}

const QString &recordingService()
{
    static const QString service = QStringLiteral("service RecordingService");
    return service;
}

} // namespace

class TestOcelleBridge : public QObject
{
    Q_OBJECT
private slots:
    void metaData_namesKeyAndService();
    void create_forwardsWithTranslatedKey_andReleaseGoesToBackend();
    void questions_areForwardedWithTranslatedKey();
    void otherKeys_areNotForwarded();
    void unload_keepsBackend_whileServiceIsInUse();
    void missingBackend_givesOneWarningAndNoCamera();
    void brokenBackend_givesOneWarningAndNoCamera();
    void backendOfAnotherKind_givesOneWarningAndNoCamera();
    void application_findsCamerasOfBackend();
    void application_getsNoCamera_withoutBackend();
    void application_leavingWithCameraOpen_endsInOrder();
    void application_closingItsCamera_hasBackendDestroyed();
    void installedCameraPlugin_keepsItsPlace();
    void preferredPlugin_winsOverInstalledOne_data();
    void preferredPlugin_winsOverInstalledOne();

private:
    void checkNoCamera(const PluginFolder &folder, const QString &reason);
};

void TestOcelleBridge::metaData_namesKeyAndService()
{
    const QJsonObject all = QPluginLoader(QStringLiteral(OCELLE_BRIDGE)).metaData();
    QCOMPARE(all.value(QLatin1String("IID")).toString(),
             QStringLiteral("org.qt-project.qt.mediaserviceproviderfactory/5.0"));
    const QJsonObject expected {
        { QStringLiteral("Keys"), QJsonArray { QStringLiteral("ocelle-bridge") } },
        { QStringLiteral("Services"), QJsonArray { QStringLiteral("org.qt-project.qt.camera") } }
    };
    QCOMPARE(all.value(QLatin1String("MetaData")).toObject(), expected);
}

void TestOcelleBridge::create_forwardsWithTranslatedKey_andReleaseGoesToBackend()
{
    PluginFolder folder;
    folder.addBackend();
    LoadedBridge bridge(folder);
    QVERIFY(bridge.isComplete());
    QPluginLoader backend(folder.backend());

    QMediaService *const service = bridge.plugin->create(QString::fromLatin1(CameraKey));
    QVERIFY(service);
    QCOMPARE(backend.instance()->property("alive").toInt(), 1);
    bridge.plugin->release(service);
    bridge.plugin->release(nullptr);

    const QStringList expected { QStringLiteral("create veltra.palaver.camera"),
                                 QStringLiteral("release RecordingService") };
    QCOMPARE(backend.instance()->property("calls").toStringList(), expected);
    QCOMPARE(backend.instance()->property("alive").toInt(), 0);
}

void TestOcelleBridge::questions_areForwardedWithTranslatedKey()
{
    PluginFolder folder;
    folder.addBackend();
    LoadedBridge bridge(folder);
    QVERIFY(bridge.isComplete());

    QCOMPARE(bridge.devices->devices(CameraKey), (QList<QByteArray> { "left", "right" }));
    QCOMPARE(bridge.devices->deviceDescription(CameraKey, "left"), QStringLiteral("The left one"));
    QCOMPARE(bridge.defaultDevice->defaultDevice(CameraKey), QByteArray("right"));
    QCOMPARE(bridge.features->supportedFeatures(CameraKey),
             QMediaServiceProviderHint::Features(QMediaServiceProviderHint::VideoSurface));
    QCOMPARE(bridge.info->cameraPosition("left"), QCamera::FrontFace);
    QCOMPARE(bridge.info->cameraOrientation("left"), 90);

    const QStringList expected { QStringLiteral("devices veltra.palaver.camera"),
                                 QStringLiteral("deviceDescription veltra.palaver.camera left"),
                                 QStringLiteral("defaultDevice veltra.palaver.camera"),
                                 QStringLiteral("supportedFeatures veltra.palaver.camera"),
                                 QStringLiteral("cameraPosition left"),
                                 QStringLiteral("cameraOrientation left") };
    QPluginLoader backend(folder.backend());
    QCOMPARE(backend.instance()->property("calls").toStringList(), expected);
}

void TestOcelleBridge::otherKeys_areNotForwarded()
{
    PluginFolder folder;
    folder.addBackend();
    LoadedBridge bridge(folder);
    QVERIFY(bridge.isComplete());

    const QByteArray keys[] = { "veltra.palaver.camera", "ORG.QT-PROJECT.QT.CAMERA",
                                Q_MEDIASERVICE_RADIO, "" };
    for (const QByteArray &key : keys) {
        QVERIFY(!bridge.plugin->create(QString::fromLatin1(key)));
        QVERIFY(bridge.devices->devices(key).isEmpty());
        QVERIFY(bridge.devices->deviceDescription(key, "left").isEmpty());
        QVERIFY(bridge.defaultDevice->defaultDevice(key).isEmpty());
        QVERIFY(!bridge.features->supportedFeatures(key));
    }
    QPluginLoader backend(folder.backend());
    QCOMPARE(backend.instance()->property("calls").toStringList(), QStringList());
}

void TestOcelleBridge::unload_keepsBackend_whileServiceIsInUse()
{
    PluginFolder folder;
    folder.addBackend();
    const QString farewell = folder.root() + QStringLiteral("/farewell");
    qputenv("OCELLE_TEST_FAREWELL", QFile::encodeName(farewell));
    QMediaService *service = nullptr;
    QPointer<QObject> backend;
    {
        LoadedBridge bridge(folder);
        service = bridge.plugin->create(QString::fromLatin1(CameraKey));
        backend = QPluginLoader(folder.backend()).instance();
    }
    qunsetenv("OCELLE_TEST_FAREWELL");
    QVERIFY(backend);
    QVERIFY(service);
    qobject_cast<QMediaServiceProviderPlugin *>(backend)->release(service);
    QCOMPARE(backend->property("alive").toInt(), 0);
}

/*! Asks everything of the bridge in \a folder and expects nothing, and one warning about it. */
void TestOcelleBridge::checkNoCamera(const PluginFolder &folder, const QString &reason)
{
    Log log;
    LoadedBridge bridge(folder);
    QVERIFY(bridge.isComplete());
    QCOMPARE(Log::lines, QStringList());
    for (int again = 0; again < 2; ++again) {
        QVERIFY(!bridge.plugin->create(QString::fromLatin1(CameraKey)));
        bridge.plugin->release(nullptr);
        QVERIFY(bridge.devices->devices(CameraKey).isEmpty());
        QVERIFY(bridge.devices->deviceDescription(CameraKey, "left").isEmpty());
        QVERIFY(bridge.defaultDevice->defaultDevice(CameraKey).isEmpty());
        QVERIFY(!bridge.features->supportedFeatures(CameraKey));
        QCOMPARE(bridge.info->cameraPosition("left"), QCamera::UnspecifiedPosition);
        QCOMPARE(bridge.info->cameraOrientation("left"), 0);
    }
    QCOMPARE(Log::lines.size(), 1);
    const QString line = Log::lines.first();
    const QString start = QStringLiteral("veltra.palaver.bridge: No camera: the camera back end "
                                         "libocellebackend.so could not be loaded from %1: ");
    QVERIFY2(line.startsWith(start.arg(folder.services())), qPrintable(line));
    QVERIFY2(line.contains(reason), qPrintable(line));
    QVERIFY2(line.endsWith(QStringLiteral("Install it beside libocellebridge.so.")),
             qPrintable(line));
}

void TestOcelleBridge::missingBackend_givesOneWarningAndNoCamera()
{
    PluginFolder folder;
    checkNoCamera(folder, QStringLiteral("there is no file ") + folder.backend());
}

void TestOcelleBridge::brokenBackend_givesOneWarningAndNoCamera()
{
    PluginFolder folder;
    QFile file(folder.backend());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(5000, 'x'));
    file.close();
    checkNoCamera(folder, QStringLiteral("not an ELF object"));
}

void TestOcelleBridge::backendOfAnotherKind_givesOneWarningAndNoCamera()
{
    PluginFolder folder;
    folder.add(QLibraryInfo::location(QLibraryInfo::PluginsPath) +
                       QStringLiteral("/imageformats/libqgif.so"),
               PluginFolder::backendName());
    checkNoCamera(folder, QStringLiteral("is a plugin of another kind (QGifPlugin)"));
}

void TestOcelleBridge::application_findsCamerasOfBackend()
{
    PluginFolder folder;
    folder.addBackend();
    const Choice choice = chooseCamera(folder, QString());
    QVERIFY2(choice.exitCode == 0, qPrintable(choice.log));
    const QStringList expected = QStringList { recordingService() } + recordingCameras() +
                                 QStringList { QStringLiteral("default right") };
    QCOMPARE(choice.answers, expected);
}

void TestOcelleBridge::application_getsNoCamera_withoutBackend()
{
    PluginFolder folder;
    const Choice choice = chooseCamera(folder, QStringLiteral("ocelle"));
    QVERIFY2(choice.exitCode == 0, qPrintable(choice.log));
    QCOMPARE(choice.answers,
             (QStringList { QStringLiteral("service none"), QStringLiteral("default ") }));
    QCOMPARE(choice.log.count(QStringLiteral("No camera:")), 1);
}

void TestOcelleBridge::application_leavingWithCameraOpen_endsInOrder()
{
    PluginFolder folder;
    folder.addBackend();
    const QString farewell = folder.root() + QStringLiteral("/farewell");
    const Choice choice =
            chooseCamera(folder, QString(), { QStringLiteral("leave-open") }, farewell);
    QVERIFY2(choice.exitCode == 0, qPrintable(choice.log));
    QCOMPARE(choice.answers.value(0), recordingService());
    QVERIFY(!QFile::exists(farewell));
}

void TestOcelleBridge::application_closingItsCamera_hasBackendDestroyed()
{
    PluginFolder folder;
    folder.addBackend();
    const QString farewell = folder.root() + QStringLiteral("/farewell");
    const Choice choice = chooseCamera(folder, QString(), {}, farewell);
    QVERIFY2(choice.exitCode == 0, qPrintable(choice.log));
    QVERIFY(QFile::exists(farewell));
}

/*! Puts Qt's own GStreamer plugins beside the bridge, so that file names decide who is first. */
static void addGStreamer(PluginFolder &folder)
{
    const QDir installed(QLibraryInfo::location(QLibraryInfo::PluginsPath) +
                         QStringLiteral("/mediaservice"));
    const QStringList names = installed.entryList({ QStringLiteral("libgst*.so") });
    QVERIFY(names.contains(QStringLiteral("libgstmediacapture.so")));
    for (const QString &name : names)
        folder.add(installed.filePath(name), name);
}

void TestOcelleBridge::installedCameraPlugin_keepsItsPlace()
{
    PluginFolder folder;
    folder.addBackend();
    addGStreamer(folder);
    const Choice choice = chooseCamera(folder, QString());
    QVERIFY2(choice.exitCode == 0, qPrintable(choice.log));
    // The other plugin is asked for the service: it makes one, or says what it lacks for that. Our
    // cameras are listed all the same.
    const QString service = choice.answers.value(0);
    const bool asked = service == QStringLiteral("service CameraBinService") ||
                       choice.log.contains(QStringLiteral("the 'camerabin' plugin is missing"));
    QVERIFY2(asked, qPrintable(service + choice.log));
    QVERIFY2(service != recordingService(), qPrintable(service));
    for (const QString &camera : recordingCameras())
        QVERIFY2(choice.answers.contains(camera),
                 qPrintable(choice.answers.join(QLatin1Char(';'))));
}

void TestOcelleBridge::preferredPlugin_winsOverInstalledOne_data()
{
    QTest::addColumn<QString>("preferred");
    QTest::newRow("short name") << QStringLiteral("ocelle");
    QTest::newRow("whole key") << QStringLiteral("ocelle-bridge");
    QTest::newRow("first of several") << QStringLiteral("ocelle,gstreamer");
}

void TestOcelleBridge::preferredPlugin_winsOverInstalledOne()
{
    QFETCH(QString, preferred);
    PluginFolder folder;
    folder.addBackend();
    addGStreamer(folder);
    const Choice choice = chooseCamera(folder, preferred);
    QVERIFY2(choice.exitCode == 0, qPrintable(choice.log));
    QCOMPARE(choice.answers.value(0), recordingService());
    QCOMPARE(choice.answers.mid(1, 2), recordingCameras());
    QCOMPARE(choice.answers.last(), QStringLiteral("default right"));
}

QTEST_GUILESS_MAIN(TestOcelleBridge)
#include "tst_ocellebridge.moc"
