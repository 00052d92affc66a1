// SPDX-License-Identifier: BSD-3-Clause
#include "commandline.h"
#include "commands.h"
#include "console.h"
#include "doctor/libraryexamination.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <dlfcn.h>

#include <algorithm>
#include <string>
#include <vector>

// The program links nothing of a platform, so that it starts where that is missing and can say so.
namespace {

// Where the commands are: as built, as installed, or beside the program.
QString commandsFile()
{
    const QString name = QStringLiteral("ocelle-commands.so");
    const QString self = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalPath();
    if (self.isEmpty())
        return name; // not of whatever folder is the current one
    const QDir program(self);
    for (const char *folder : { "../lib/ocelle/", OCELLE_INSTALLED_COMMANDS "/", "./" }) {
        const QString path = program.absoluteFilePath(QLatin1String(folder) + name);
        if (QFileInfo::exists(path))
            return QDir::cleanPath(path);
    }
    return name;
}

// What the doctor says where the commands cannot be loaded.
int examineLoading(const QString &file, const QString &error, bool json)
{
    using Level = Doctor::Finding::Level;
    const QString area = QStringLiteral("libraries");
    Doctor::Findings findings = Doctor::examineLibrariesOf(file);
    if (!Doctor::hasProblem(findings))
        findings.append({ Level::Problem, area, error,
                          QStringLiteral("install this program once more, as a whole, and platform "
                                         "libraries that go with it") });
    findings.append({ Level::Note, area,
                      QStringLiteral("nothing else is examined before the libraries are there"),
                      QStringLiteral("run ocelle doctor again then") });
    if (json)
        Tool::printJson(QJsonDocument(Doctor::toJson(findings)), QJsonDocument::Indented);
    for (const Doctor::Finding &finding : findings) {
        if (!json)
            Tool::printLine(Doctor::toText(finding));
    }
    return Tool::Failure;
}

} // namespace

int main(int argc, char *argv[])
{
    Tool::holdStandardStreams();
    const QString file = commandsFile();
    // Global, as what a program links is to the plugins that it loads.
    void *const commands = dlopen(QFile::encodeName(file).constData(), RTLD_LAZY | RTLD_GLOBAL);
    void *const run = commands ? dlsym(commands, OcelleCommandsName) : nullptr;
    if (run)
        return reinterpret_cast<decltype(&ocelleCommands)>(run)(argc, argv);

    const QString error = QString::fromLocal8Bit(dlerror());
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    const std::vector<std::string> doctor { "doctor" };
    const std::vector<std::string> doctorInJson { "doctor", "--json" };
    if (words == doctor || words == doctorInJson)
        return examineLoading(file, error, words == doctorInJson);
    if (std::find(words.begin(), words.end(), "--version") != words.end())
        return Tool::printLine(QStringLiteral(OCELLE_VERSION)) ? Tool::Success : Tool::Failure;
    Tool::printError(QStringLiteral("%1; ocelle doctor tells what is missing").arg(error));
    return Tool::Failure;
}
