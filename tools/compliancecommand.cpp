// SPDX-License-Identifier: BSD-3-Clause
#include "compliancecommand.h"

#include "compliance/check.h"
#include "compliance/reports.h"
#include "compliance/runner.h"
#include "console.h"

#include <QFile>

#include <algorithm>
#include <cstdlib>

namespace Tool {
namespace {

using namespace Compliance;

bool isAnyCheck(const QString &pattern)
{
    const auto &checks = allChecks();
    return std::any_of(checks.begin(), checks.end(), [&pattern](const Check &check) {
        return matches(pattern, QString::fromLatin1(check.name));
    });
}

bool writeReport(QFile *file, const std::vector<Result> &results)
{
    const QByteArray report = toJUnit(results);
    if (file->write(report) == report.size() && file->flush())
        return true;
    printError(
            QStringLiteral("%1 cannot be written: %2").arg(file->fileName(), file->errorString()));
    return false;
}

} // namespace

int checkCompliance(const ComplianceOptions &options)
{
    if (!isAnyCheck(options.checks.only)) {
        printError(QStringLiteral("there is no check \"%1\"; their names begin with cameras., "
                                  "camera., codecs., encoder. or decoder.")
                           .arg(options.checks.only));
        return Usage;
    }
    QFile report(options.report);
    if (!options.report.isEmpty() && !report.open(QIODevice::WriteOnly)) {
        printError(QStringLiteral("%1 cannot be written: %2")
                           .arg(options.report, report.errorString()));
        return Usage;
    }
    bool isWritten = true;
    const bool json = options.json;
    Runner runner(options.checks);
    const std::vector<Result> results = runner.run([&isWritten, json](const Result &result) {
        isWritten = (json || printLine(toText(result))) && isWritten;
    });
    if (!runner.hasDevice() && !runner.isStuck()) {
        printError(QStringLiteral("there is no device \"%1\"; ocelle list shows them")
                           .arg(options.checks.device));
        return Usage;
    }
    if (json)
        isWritten = printJson(toJson(results), QJsonDocument::Indented) && isWritten;
    else
        isWritten = printLine(summary(results)) && isWritten;
    if (report.isOpen())
        isWritten = writeReport(&report, results) && isWritten;
    const bool isGood = isWritten && count(results, Outcome::Kind::Fail) == 0;
    if (runner.isStuck())
        std::_Exit(Failure); // a thread is inside the platform and will not come back
    return isGood ? Success : Failure;
}

} // namespace Tool
