// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdlib>

/*!
 * Reads the command line, with so many arguments beside its options. Anything else is told and ends
 * the program with 2.
 */
inline void readOptions(QCommandLineParser *options, int arguments)
{
    options->addHelpOption();
    if (!options->parse(QCoreApplication::arguments())) {
        qCritical("%s", qPrintable(options->errorText()));
        std::exit(2);
    }
    if (options->isSet("help"))
        options->showHelp();
    const int given = options->positionalArguments().size();
    if (given == arguments)
        return;
    if (given > arguments)
        qCritical("there is one argument too many: %s",
                  qPrintable(options->positionalArguments().at(arguments)));
    else
        qCritical("an argument is missing; --help tells which");
    std::exit(2);
}
