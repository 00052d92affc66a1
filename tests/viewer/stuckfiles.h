// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>
#include <QVector>

/*!
 * Files of the names that recordings of the next time get, each of which takes some data and lets
 * its writer wait then: pipes that nobody reads.
 */
class StuckFiles
{
public:
    StuckFiles(const QString &folder, const QString &suffix);
    ~StuckFiles();
    StuckFiles(const StuckFiles &) = delete;
    StuckFiles &operator=(const StuckFiles &) = delete;

    bool areThere() const;
    bool isOneFull() const;

private:
    QVector<int> m_pipes;
};
