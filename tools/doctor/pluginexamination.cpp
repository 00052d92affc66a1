// SPDX-License-Identifier: BSD-3-Clause
#include "pluginexamination.h"

#include "libraryexamination.h"

#include <QCamera>
#include <QCameraInfo>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibraryInfo>
#include <QMediaService>
#include <QPluginLoader>
#include <QVersionNumber>

namespace Doctor {
namespace {

using Level = Finding::Level;

const char CameraService[] = "org.qt-project.qt.camera";

struct OwnPlugin
{
    const char *file;
    const char *key;
    const char *service; // one that it has to offer
    const char *purpose;
};

constexpr OwnPlugin OwnPlugins[] = {
    { "libocellebackend.so", "ocelle", "veltra.palaver.camera", "the back end" },
    { "libocellebridge.so", "ocelle-bridge", CameraService,
      "the bridge, which offers its cameras under Qt's own key" },
};

QString area()
{
    return QStringLiteral("plugins");
}

// Qt writes the patch level of none into a plugin.
QString versionText(int version)
{
    return QStringLiteral("%1.%2").arg(version >> 16).arg(version >> 8 & 0xff);
}

QStringList listOf(const QJsonObject &data, const char *name)
{
    QStringList words;
    for (const QJsonValue &value : data.value(QLatin1String(name)).toArray())
        words.append(value.toString());
    return words;
}

QStringList serviceFiles(const QString &folder)
{
    QStringList paths;
    const QDir dir(folder + QStringLiteral("/mediaservice"));
    for (const QString &name : dir.entryList({ QStringLiteral("*.so") }, QDir::Files))
        paths.append(dir.filePath(name));
    return paths;
}

// The first of the folders, or their mediaservice/, that this user may not look into; else empty.
QString lockedFolder(const QStringList &folders)
{
    for (const QString &folder : folders) {
        for (const QString &path : { folder, folder + QStringLiteral("/mediaservice") }) {
            const QFileInfo info(path);
            if (info.isDir() && !(info.isReadable() && info.isExecutable()))
                return path;
        }
    }
    return QString();
}

Finding missing(const OwnPlugin &plugin, const QStringList &folders, const QString &own)
{
    const QString name = QLatin1String(plugin.file);
    const QString text =
            QStringLiteral("%1 (%2) is in none of the folders that Qt searches: %3")
                    .arg(name, QLatin1String(plugin.purpose), folders.join(QStringLiteral(", ")));
    const QString locked = lockedFolder(folders);
    if (!locked.isEmpty())
        return { Level::Problem, area(), QStringLiteral("%1; %2 cannot be read").arg(text, locked),
                 QStringLiteral("chmod a+rx %1").arg(locked) };
    const bool isOwn =
            !own.isEmpty() && QFileInfo::exists(own + QStringLiteral("/mediaservice/") + name);
    const QString advice =
            isOwn ? QStringLiteral("set QT_PLUGIN_PATH=%1 for the application").arg(own)
                  : QStringLiteral("install it to mediaservice/ in one of them, or set "
                                   "QT_PLUGIN_PATH to the folder above the one it is in");
    return { Level::Problem, area(), text, advice };
}

// Whether the file is what its name says; else why not.
Finding metaDataFinding(const OwnPlugin &plugin, const QString &path)
{
    QPluginLoader loader(path);
    const QJsonObject all = loader.metaData();
    const QString again = QStringLiteral("install it anew");
    if (all.isEmpty())
        return { Level::Problem, area(),
                 QStringLiteral("%1 is no plugin that this Qt understands: %2")
                         .arg(path, loader.errorString()),
                 again };
    const QJsonObject data = all.value(QStringLiteral("MetaData")).toObject();
    const QStringList keys = listOf(data, "Keys");
    const QStringList services = listOf(data, "Services");
    if (!keys.contains(QLatin1String(plugin.key)) ||
        !services.contains(QLatin1String(plugin.service)))
        return { Level::Problem, area(),
                 QStringLiteral("%1 is another plugin under that name: its key is \"%2\" where "
                                "\"%3\" is due, and it offers %4")
                         .arg(path, keys.join(QStringLiteral(", ")), QLatin1String(plugin.key),
                              services.isEmpty() ? QStringLiteral("nothing")
                                                 : services.join(QStringLiteral(", "))),
                 again };
    const int version = all.value(QStringLiteral("version")).toInt();
    const QVersionNumber running = QLibraryInfo::version();
    if (version >> 8 > (running.majorVersion() << 8 | running.minorVersion()))
        return { Level::Problem, QStringLiteral("versions"),
                 QStringLiteral("%1 was built with Qt %2, and Qt %3 runs here")
                         .arg(path, versionText(version), QLatin1String(qVersion())),
                 QStringLiteral(
                         "build it with this Qt or an earlier one of the same major version") };
    if (all.value(QStringLiteral("debug")).toBool() != QLibraryInfo::isDebugBuild())
        return { Level::Note, area(),
                 QStringLiteral(
                         "%1, built with Qt %2, is a debug build and Qt is not, or the other "
                         "way round")
                         .arg(path, versionText(version)),
                 QStringLiteral("on Linux they work together; take a release build to measure") };
    return { Level::Good, area(),
             QStringLiteral("%1, built with Qt %2").arg(path, versionText(version)), QString() };
}

Findings examineOwn(const OwnPlugin &plugin, const QString &path)
{
    const QFileInfo file(path);
    if (!file.isReadable())
        return { { Level::Problem, area(), QStringLiteral("%1 cannot be read").arg(path),
                   QStringLiteral("chmod a+r %1").arg(path) } };
    Findings findings { metaDataFinding(plugin, path) };
    if (hasProblem(findings))
        return findings;
    findings += examineLibrariesOf(path);
    QPluginLoader loader(path);
    loader.setLoadHints(QLibrary::PreventUnloadHint); // its threads may outlive the plugin object
    if (!hasProblem(findings) && !loader.load())
        findings.append({ Level::Problem, QStringLiteral("libraries"), loader.errorString(),
                          QStringLiteral("the libraries found are not those that it was built "
                                         "with; install matching ones") });
    return findings;
}

// Qt takes the first of a name; the back end has to be beside the bridge.
Findings examineTogether(const QStringList &places)
{
    const auto folder = [](const QString &path) { return QFileInfo(path).absolutePath(); };
    if (places.size() != 2 || folder(places.first()) == folder(places.last()))
        return {};
    return { { Level::Problem, area(),
               QStringLiteral("the bridge is in %1, the back end in %2")
                       .arg(folder(places.last()), folder(places.first())),
               QStringLiteral("put both into one folder, the bridge looks beside itself") } };
}

Findings examineOthers(const QStringList &folders)
{
    Findings findings;
    for (const QString &folder : folders) {
        for (const QString &path : serviceFiles(folder)) {
            const QString name = QFileInfo(path).fileName();
            const bool isOwn = name == QLatin1String(OwnPlugins[0].file) ||
                               name == QLatin1String(OwnPlugins[1].file);
            const QJsonObject data = QPluginLoader(path).metaData();
            const QJsonObject inner = data.value(QStringLiteral("MetaData")).toObject();
            if (isOwn || !listOf(inner, "Services").contains(QLatin1String(CameraService)))
                continue;
            findings.append(
                    { Level::Note, QStringLiteral("others"),
                      QStringLiteral("%1 (key %2) offers cameras too")
                              .arg(path, listOf(inner, "Keys").join(QStringLiteral(", "))),
                      QStringLiteral("see \"choice\" for who is taken; "
                                     "QT_MULTIMEDIA_PREFERRED_PLUGINS=ocelle picks ours") });
        }
    }
    return findings;
}

} // namespace

Findings examinePlugins(const QStringList &folders, const QString &own)
{
    Findings findings;
    QStringList places;
    for (const OwnPlugin &plugin : OwnPlugins) {
        QString first;
        for (const QString &folder : folders) {
            const QString path =
                    folder + QStringLiteral("/mediaservice/") + QLatin1String(plugin.file);
            if (first.isEmpty() && QFileInfo(path).isFile())
                first = path;
        }
        if (first.isEmpty()) {
            findings.append(missing(plugin, folders, own));
            continue;
        }
        places.append(first);
        findings += examineOwn(plugin, first);
    }
    return findings + examineTogether(places) + examineOthers(folders);
}

Findings examineChoice()
{
    const QString choice = QStringLiteral("choice");
    const QCamera camera;
    const QMediaService *const service = camera.service();
    if (!service)
        return { { Level::Problem, choice, QStringLiteral("a plain QCamera gets no camera service"),
                   QStringLiteral(
                           "where plugins and libraries are good, another plugin comes first: set "
                           "QT_MULTIMEDIA_PREFERRED_PLUGINS=ocelle") } };
    const QString name = QLatin1String(service->metaObject()->className());
    if (!name.startsWith(QLatin1String("Ocelle")))
        return { { Level::Problem, choice,
                   QStringLiteral("a plain QCamera is served by another plugin (%1)").arg(name),
                   QStringLiteral("set QT_MULTIMEDIA_PREFERRED_PLUGINS=ocelle, or put our plugins "
                                  "into a folder that Qt searches earlier") } };
    const int cameras = QCameraInfo::availableCameras().size();
    return { { Level::Good, choice,
               QStringLiteral("a plain QCamera is served by ours; cameras that Qt lists: %1")
                       .arg(cameras),
               QString() } };
}

} // namespace Doctor
