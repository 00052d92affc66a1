// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "outcome.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QString>

#include <vector>

namespace Compliance {

/*! "fail  camera.open         pattern:back  reason" */
QString toText(const Result &result);

/*! "12 checks: 10 passed, 1 failed, 1 skipped" */
QString summary(const std::vector<Result> &results);

QJsonDocument toJson(const std::vector<Result> &results);

/*! JUnit's XML: one suite, one case for each result. */
QByteArray toJUnit(const std::vector<Result> &results);

int count(const std::vector<Result> &results, Outcome::Kind kind);

} // namespace Compliance
