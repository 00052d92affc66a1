// SPDX-License-Identifier: BSD-3-Clause
#include "stderrcapture.h"

#include <QtGlobal>

#include <unistd.h>

#include <cstdio>

StderrCapture::StderrCapture()
{
    if (!m_file.open())
        qFatal("no temporary file to be had");
    std::fflush(stderr);
    m_saved = dup(STDERR_FILENO);
    dup2(m_file.handle(), STDERR_FILENO);
}

StderrCapture::~StderrCapture()
{
    restore();
}

QStringList StderrCapture::lines()
{
    restore();
    m_file.seek(0);
    return QString::fromUtf8(m_file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void StderrCapture::restore()
{
    if (m_saved < 0)
        return;
    std::fflush(stderr);
    dup2(m_saved, STDERR_FILENO);
    close(m_saved);
    m_saved = -1;
}
