// SPDX-License-Identifier: BSD-3-Clause
#include "homefolder.h"

#include <QDir>
#include <QFile>

HomeFolder::HomeFolder()
{
    qputenv("HOME", QFile::encodeName(m_folder.path()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder.filePath(QStringLiteral(".config"))));
}

void HomeFolder::clear() const
{
    for (const QString &folder : { pictures(), videos() }) {
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QDir(folder).removeRecursively();
        QFile::remove(folder);
    }
}

QStringList HomeFolder::files(const QString &folder, const QString &suffix)
{
    QStringList paths;
    for (const QFileInfo &file :
         QDir(folder).entryInfoList({ QStringLiteral("*") + suffix }, QDir::Files, QDir::Name))
        paths.append(file.absoluteFilePath());
    return paths;
}
