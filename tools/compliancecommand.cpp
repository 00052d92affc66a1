// SPDX-License-Identifier: BSD-3-Clause
#include "compliancecommand.h"

#include "compliance/check.h"
#include "compliance/reports.h"
#include "compliance/runner.h"
#include "console.h"

#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace Tool {
namespace {

using namespace Compliance;

bool isAnyCheck(const QString &pattern)
{
    if (matches(pattern, QStringLiteral("platform.discovery"))) // which every run begins with
        return true;
    const auto &checks = allChecks();
    return std::any_of(checks.begin(), checks.end(), [&pattern](const Check &check) {
        return matches(pattern, QString::fromLatin1(check.name));
    });
}

// A file that is there stays as it is until there are results.
std::unique_ptr<QFileDevice> makeReport(const QString &name)
{
    const QFileInfo info(name);
    if (info.exists() && !info.isFile()) // such as /dev/stdout, which no file may replace
        return std::make_unique<QFile>(name);
    return std::make_unique<QSaveFile>(name);
}

bool writeReport(QFileDevice *file, const std::vector<Result> &results)
{
    const QByteArray report = toJUnit(results);
    auto *const replacement = qobject_cast<QSaveFile *>(file);
    if (file->write(report) == report.size() &&
        (replacement ? replacement->commit() : file->flush()))
        return true;
    printError(
            QStringLiteral("%1 cannot be written: %2").arg(file->fileName(), file->errorString()));
    return false;
}

} // namespace

int checkCompliance(const ComplianceOptions &options)
{
    if (!isAnyCheck(options.checks.only)) {
        printError(QStringLiteral("there is no check \"%1\"; their names begin with platform., "
                                  "cameras., camera., codecs., encoder. or decoder.")
                           .arg(options.checks.only));
        return Usage;
    }
    const auto report = makeReport(options.report);
    if (!options.report.isEmpty() && !report->open(QIODevice::WriteOnly)) {
        printError(QStringLiteral("%1 cannot be written: %2")
                           .arg(options.report, report->errorString()));
        return Usage;
    }
    bool isWritten = true;
    const bool json = options.json;
    Runner runner(options.checks);
    const std::vector<Result> results = runner.run([&isWritten, json](const Result &result) {
        isWritten = (json || printLine(toText(result))) && isWritten;
    });
    if (!runner.wrongChoice().isEmpty()) {
        printError(runner.wrongChoice());
        return Usage;
    }
    if (json)
        isWritten = printJson(toJson(results), QJsonDocument::Indented) && isWritten;
    else
        isWritten = printLine(summary(results)) && isWritten;
    if (report->isOpen())
        isWritten = writeReport(report.get(), results) && isWritten;
    const bool isGood = isWritten && count(results, Outcome::Kind::Fail) == 0;
    if (runner.isStuck())
        std::_Exit(Failure); // a thread is inside the platform and will not come back
    return isGood ? Success : Failure;
}

} // namespace Tool
