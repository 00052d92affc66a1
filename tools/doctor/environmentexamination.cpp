// SPDX-License-Identifier: BSD-3-Clause
#include "environmentexamination.h"

#include "platformexamination.h"
#include "standinfunctions.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <sys/stat.h>
#include <unistd.h>

namespace Doctor {
namespace {

using Level = Finding::Level;

struct Choice
{
    const char *variable;
    QStringList values;
};

QString area()
{
    return QStringLiteral("environment");
}

Findings examineCameras(const QProcessEnvironment &environment)
{
    const QString name = QStringLiteral("OCELLE_CAMERAS");
    if (!environment.contains(name))
        return {};
    const QString value = environment.value(name);
    const auto problems = Tool::problemsOfSelection(QFile::encodeName(value).constData());
    if (!problems)
        return { { Level::Note, area(),
                   QStringLiteral("OCELLE_CAMERAS is not examined: the platform libraries are a "
                                  "device's own"),
                   QStringLiteral("unset it; a device's platform decides which cameras it has") } };
    if (value.trimmed().isEmpty())
        return { { Level::Problem, area(),
                   QStringLiteral("OCELLE_CAMERAS is empty, so there is no camera at all"),
                   QStringLiteral("unset it, or set it to v4l2,pattern") } };
    Findings findings;
    for (const std::string &problem : *problems)
        findings.append({ Level::Problem, area(),
                          QStringLiteral("OCELLE_CAMERAS: ") + QString::fromStdString(problem),
                          QStringLiteral("correct that entry or leave it out") });
    if (problems->empty() && leavesNodesOut(value))
        findings.append({ Level::Note, area(),
                          QStringLiteral("OCELLE_CAMERAS=%1 leaves out webcams").arg(value),
                          QStringLiteral("add v4l2 to have them") });
    return findings;
}

Findings examineChoices(const QProcessEnvironment &environment)
{
    const QList<Choice> choices {
        { "OCELLE_PATTERN_FORMAT", { "nv12", "yu12" } },
        { "OCELLE_V4L2_WATCHDOG", { "on", "off" } },
        { "OCELLE_DECODER_THREADS", { "delay", "throughput" } },
        { "OCELLE_DECODER_OUTPUT", { "buffer", "ycbcr" } },
    };
    Findings findings;
    for (const Choice &choice : choices) {
        const QString name = QLatin1String(choice.variable);
        const QString value = environment.value(name);
        if (environment.contains(name) && !choice.values.contains(value))
            findings.append({ Level::Problem, area(),
                              QStringLiteral("%1=%2 is not understood").arg(name, value),
                              QStringLiteral("set it to %1, or unset it")
                                      .arg(choice.values.join(QStringLiteral(" or "))) });
    }
    return findings;
}

Findings examinePluginPath(const QProcessEnvironment &environment)
{
    Findings findings;
    const QString name = QStringLiteral("QT_PLUGIN_PATH");
    for (const QString &folder :
         environment.value(name).split(QLatin1Char(':'), Qt::SkipEmptyParts)) {
        const QFileInfo info(folder);
        if (!info.isDir())
            findings.append(
                    { Level::Problem, area(),
                      QStringLiteral("QT_PLUGIN_PATH names %1, which is no folder").arg(folder),
                      QStringLiteral("correct it; folders are separated by colons") });
        else if (!info.isReadable() || !info.isExecutable())
            findings.append(
                    { Level::Problem, area(),
                      QStringLiteral("QT_PLUGIN_PATH names %1, which cannot be read").arg(folder),
                      QStringLiteral("chmod a+rx %1").arg(folder) });
        else if (info.fileName() == QLatin1String("mediaservice"))
            findings.append({ Level::Problem, area(),
                              QStringLiteral("QT_PLUGIN_PATH names %1, the folder of the plugins "
                                             "themselves")
                                      .arg(folder),
                              QStringLiteral("name the folder above it") });
    }
    return findings;
}

Findings examinePreference(const QProcessEnvironment &environment)
{
    const QString name = QStringLiteral("QT_MULTIMEDIA_PREFERRED_PLUGINS");
    const QString value = environment.value(name);
    if (value.isEmpty() || value.contains(QLatin1String("ocelle")))
        return {};
    return {
        { Level::Note, area(),
          QStringLiteral("QT_MULTIMEDIA_PREFERRED_PLUGINS=%1 prefers other plugins").arg(value),
          QStringLiteral("set it to ocelle, or unset it") }
    };
}

Findings examineLogging(const QProcessEnvironment &environment)
{
    const QString rules = environment.value(QStringLiteral("QT_LOGGING_RULES"));
    for (const QString &rule : rules.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const QString left = rule.section(QLatin1Char('='), 0, 0).trimmed();
        const bool isOurs =
                left.startsWith(QLatin1Char('*')) || left.startsWith(QLatin1String("veltra"));
        const bool isSpecial =
                left.endsWith(QLatin1String(".debug")) || left.endsWith(QLatin1String(".info"));
        if (isOurs && !isSpecial &&
            rule.section(QLatin1Char('='), 1).trimmed() == QLatin1String("false"))
            return { { Level::Note, area(),
                       QStringLiteral("QT_LOGGING_RULES=%1 silences our errors").arg(rules),
                       QStringLiteral("unset it to see what goes wrong") } };
    }
    return {};
}

Findings examineRuntimeFolder(const QProcessEnvironment &environment)
{
    const QString name = QStringLiteral("XDG_RUNTIME_DIR");
    const QString folder = environment.value(name);
    const QString advice =
            QStringLiteral("mkdir -m 700 a folder of your own and set "
                           "XDG_RUNTIME_DIR to it; a login session does so by itself");
    struct stat status
    {
    };
    if (folder.isEmpty())
        return { { Level::Note, area(),
                   QStringLiteral("XDG_RUNTIME_DIR is not set, so there is no Wayland display"),
                   advice } };
    if (stat(QFile::encodeName(folder).constData(), &status) != 0 || !S_ISDIR(status.st_mode) ||
        status.st_uid != geteuid())
        return { { Level::Note, area(),
                   QStringLiteral("XDG_RUNTIME_DIR=%1 is no folder of this user").arg(folder),
                   advice } };
    return {};
}

} // namespace

Findings examineEnvironment(const QProcessEnvironment &environment)
{
    const Findings findings = examineCameras(environment) + examineChoices(environment) +
                              examinePluginPath(environment) + examinePreference(environment) +
                              examineLogging(environment) + examineRuntimeFolder(environment);
    if (!findings.isEmpty())
        return findings;
    return { { Level::Good, area(), QStringLiteral("nothing in it stands in the way"),
               QString() } };
}

} // namespace Doctor
