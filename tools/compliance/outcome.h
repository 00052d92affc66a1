// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>

namespace Compliance {

/*! What came of one check, and why. */
struct Outcome
{
    enum class Kind { Pass, Fail, Skip };

    Kind kind = Kind::Pass;
    QString reason; // of a pass, what was seen; may be empty then

    static Outcome pass(const QString &seen = QString()) { return { Kind::Pass, seen }; }
    static Outcome fail(const QString &reason) { return { Kind::Fail, reason }; }
    static Outcome skip(const QString &reason) { return { Kind::Skip, reason }; }
};

/*! One line of the report. */
struct Result
{
    QString check;
    QString purpose; // of the check
    QString device;  // id; empty for the platform as a whole
    Outcome outcome;
    double seconds = 0;
};

/*! "pass", "fail" or "skip" */
QString kindName(Outcome::Kind kind);

} // namespace Compliance
