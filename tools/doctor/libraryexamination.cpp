// SPDX-License-Identifier: BSD-3-Clause
#include "libraryexamination.h"

#include <QProcess>
#include <QStringList>

namespace Doctor {
namespace {

using Level = Finding::Level;

const char *const Platform[] = { "libocelle.so.", "libocelle-qt5.so.", "libQt5Palaver.so." };

QString area()
{
    return QStringLiteral("libraries");
}

} // namespace

Findings judgeLibraries(const QString &plugin, const QByteArray &output)
{
    Findings findings;
    QStringList found;
    for (const QString &line : QString::fromLocal8Bit(output).split(QLatin1Char('\n'))) {
        const QStringList parts = line.trimmed().split(QStringLiteral(" => "));
        if (parts.size() != 2)
            continue;
        const QString &name = parts.first();
        const QString place = parts.last().section(QLatin1Char(' '), 0, 0);
        bool isPlatform = false;
        for (const char *library : Platform)
            isPlatform = isPlatform || name.startsWith(QLatin1String(library));
        if (parts.last() == QLatin1String("not found"))
            findings.append({ Level::Problem, area(),
                              QStringLiteral("%1, which %2 needs, is not found").arg(name, plugin),
                              isPlatform
                                      ? QStringLiteral("install the platform's libraries where the "
                                                       "loader looks and run ldconfig, or set "
                                                       "LD_LIBRARY_PATH to their folder")
                                      : QStringLiteral("install the package that has it") });
        else if (isPlatform)
            found.append(place);
    }
    if (!found.isEmpty())
        findings.append({ Level::Good, area(), found.join(QStringLiteral(", ")), QString() });
    return findings;
}

Findings examineLibrariesOf(const QString &plugin)
{
    constexpr int limit = 10000; // ms
    QProcess ldd;
    ldd.start(QStringLiteral("ldd"), { plugin });
    if (!ldd.waitForFinished(limit)) {
        ldd.kill();
        ldd.waitForFinished();
        return { { Level::Note, area(),
                   QStringLiteral("ldd cannot be run: %1").arg(ldd.errorString()),
                   QStringLiteral("without it only the first missing library is told") } };
    }
    return judgeLibraries(plugin, ldd.readAllStandardOutput());
}

} // namespace Doctor
