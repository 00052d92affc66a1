// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QJsonDocument>
#include <QString>

namespace Tool {

/*!
 * Gives those of standard input, output and error that are closed to /dev/null, or what is opened
 * next would be taken for them. Writing to one of them fails. For the very start of a program.
 */
void holdStandardStreams();

/*! Writes \a text and a line feed to standard output at once; false if that failed, which was told. */
bool printLine(const QString &text);

/*! The same for a whole document, indented or in one line. */
bool printJson(const QJsonDocument &document, QJsonDocument::JsonFormat format);

/*! The program's name, "ocelle" unless set before anything is printed; not copied. */
void setProgramName(const char *name);

/*! One line on standard error that says what went wrong. */
void printError(const QString &text);

/*! One line on standard error that is good to know. */
void printNote(const QString &text);

/*!
 * How far a long run has come, on standard error: a line that keeps changing on a terminal, else
 * a line of its own.
 */
void printProgress(const QString &text);
void endProgress();
bool progressIsLive();

} // namespace Tool
