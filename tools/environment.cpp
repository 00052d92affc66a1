// SPDX-License-Identifier: BSD-3-Clause
#include "environment.h"

#include "console.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLoggingCategory>

extern "C" {
#include <libavutil/log.h>
}

namespace Tool {
namespace {

// Qt's own words that help nobody here: it writes every camera error as a warning too, the one that
// stands for success included, and misses a folder that only desktop sessions have.
constexpr const char *Idle[] = { "Camera error:", "QStandardPaths: XDG_RUNTIME_DIR" };

void writeMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    Q_UNUSED(type)
    Q_UNUSED(context)
    for (const char *words : Idle) {
        if (message.startsWith(QLatin1String(words)))
            return;
    }
    printError(message);
}

} // namespace

void prepareEnvironment(bool prefersOurs)
{
    if (prefersOurs && !qEnvironmentVariableIsSet("QT_MULTIMEDIA_PREFERRED_PLUGINS"))
        qputenv("QT_MULTIMEDIA_PREFERRED_PLUGINS", "ocelle");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        QByteArray platforms; // tried in this order
        if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
            platforms += "wayland;";
        if (!qEnvironmentVariableIsEmpty("DISPLAY"))
            platforms += "xcb;";
        qputenv("QT_QPA_PLATFORM", platforms + "offscreen");
    }
    // Errors are told by the commands, once. QT_LOGGING_RULES prevails.
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n"
                                                    "veltra.palaver.*.warning=false\n"
                                                    "veltra.palaver.*.critical=false"));
    qInstallMessageHandler(writeMessage);
    av_log_set_level(AV_LOG_FATAL); // the same for libav's own words
}

QString ownPluginFolder()
{
    const QDir program(QCoreApplication::applicationDirPath());
    for (const QString &folder :
         { QStringLiteral("../plugins"), QStringLiteral(OCELLE_INSTALLED_PLUGINS) }) {
        const QString path = QDir::cleanPath(program.absoluteFilePath(folder));
        if (QFileInfo::exists(path + QLatin1String("/mediaservice/libocellebridge.so")))
            return path;
    }
    return QString();
}

void addPluginFolder()
{
    const QString path = QFileInfo(ownPluginFolder()).canonicalFilePath(); // as Qt has them
    QStringList paths = QCoreApplication::libraryPaths();
    if (path.isEmpty() || paths.contains(path))
        return;
    // Qt has those of QT_PLUGIN_PATH in front of its own.
    QStringList wanted;
    for (const QString &folder :
         qEnvironmentVariable("QT_PLUGIN_PATH").split(QDir::listSeparator(), Qt::SkipEmptyParts))
        wanted.append(QDir(folder).canonicalPath());
    int place = 0;
    while (place < paths.size() && wanted.contains(paths.at(place)))
        ++place;
    paths.insert(place, path);
    QCoreApplication::setLibraryPaths(paths);
}

bool hasDisplay()
{
    const QString platform = QGuiApplication::platformName();
    return platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
}

} // namespace Tool
