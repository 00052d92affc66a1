// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QCommandLineParser>

#include <cstdlib>

/*! The whole number from 1 that the option has; anything else is told and ends the program. */
inline int numberOption(const QCommandLineParser &options, const QString &name)
{
    bool isNumber = false;
    const int number = options.value(name).toInt(&isNumber);
    if (!isNumber || number < 1) {
        qCritical("--%s takes a whole number from 1, not \"%s\"", qPrintable(name),
                  qPrintable(options.value(name)));
        std::exit(2);
    }
    return number;
}
