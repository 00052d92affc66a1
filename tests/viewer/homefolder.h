// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>
#include <QTemporaryDir>

/*! A home of the test's own, with the folders for pictures and videos at their usual places. */
class HomeFolder
{
public:
    HomeFolder();

    QString pictures() const { return m_folder.filePath(QStringLiteral("Pictures")); }
    QString videos() const { return m_folder.filePath(QStringLiteral("Videos")); }
    void clear() const; // of both
    /*! Files of that kind in it, with their paths; the newest last. */
    static QStringList files(const QString &folder, const QString &suffix);

private:
    QTemporaryDir m_folder;
};
