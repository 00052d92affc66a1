// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QStringList>
#include <QTemporaryFile>

/*! Catches what this process writes to standard error, from its making until lines() is called. */
class StderrCapture
{
public:
    StderrCapture();
    ~StderrCapture();
    StderrCapture(const StderrCapture &) = delete;
    StderrCapture &operator=(const StderrCapture &) = delete;

    /*! Ends the catching; what was written, by lines. */
    QStringList lines();

private:
    void restore();

    QTemporaryFile m_file;
    int m_saved = -1; // the real standard error
};
