// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QJsonArray>
#include <QList>
#include <QString>

namespace Doctor {

/*! One thing that was looked at. */
struct Finding
{
    enum class Level {
        Good,
        Note,    // good to know; nothing has to be done
        Problem, // keeps cameras or codecs from an application
    };

    Level level = Level::Good;
    QString area;   // what was looked at: "plugins", "libraries"
    QString text;   // what is so
    QString advice; // what to do; empty for what is good
};

using Findings = QList<Finding>;

bool hasProblem(const Findings &findings);

/*! One line, and a second one with the advice where there is any. */
QString toText(const Finding &finding);
QJsonArray toJson(const Findings &findings);

} // namespace Doctor
