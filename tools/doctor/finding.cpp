// SPDX-License-Identifier: BSD-3-Clause
#include "finding.h"

#include <QJsonObject>

#include <algorithm>

namespace Doctor {
namespace {

constexpr int LevelWidth = 9; // of the longest, and the gap
constexpr int AreaWidth = 13;

QString levelName(Finding::Level level)
{
    switch (level) {
    case Finding::Level::Good:
        return QStringLiteral("good");
    case Finding::Level::Note:
        return QStringLiteral("note");
    case Finding::Level::Problem:
        break;
    }
    return QStringLiteral("problem");
}

} // namespace

bool hasProblem(const Findings &findings)
{
    return std::any_of(findings.begin(), findings.end(), [](const Finding &finding) {
        return finding.level == Finding::Level::Problem;
    });
}

QString toText(const Finding &finding)
{
    QString text = levelName(finding.level).leftJustified(LevelWidth) +
                   finding.area.leftJustified(AreaWidth) + finding.text;
    if (!finding.advice.isEmpty())
        text += QLatin1Char('\n') + QString(LevelWidth + AreaWidth, QLatin1Char(' ')) +
                QStringLiteral("-> ") + finding.advice;
    return text;
}

QJsonArray toJson(const Findings &findings)
{
    QJsonArray array;
    for (const Finding &finding : findings) {
        array.append(QJsonObject { { QStringLiteral("level"), levelName(finding.level) },
                                   { QStringLiteral("area"), finding.area },
                                   { QStringLiteral("finding"), finding.text },
                                   { QStringLiteral("advice"), finding.advice } });
    }
    return array;
}

} // namespace Doctor
