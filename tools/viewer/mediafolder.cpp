// SPDX-License-Identifier: BSD-3-Clause
#include "mediafolder.h"

#include "videofilewriter.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

namespace Viewer {

bool isTaken(const QString &file)
{
    for (const QString &name : { file, file + Tool::VideoFileWriter::partSuffix() }) {
        const QFileInfo info(name);
        if (info.exists() || info.isSymLink())
            return true;
    }
    return false;
}

QString newFileName(QStandardPaths::StandardLocation location, const QString &suffix,
                    QString *error)
{
    const QString folder = QStandardPaths::writableLocation(location);
    if (!QDir().mkpath(folder)) {
        *error = QStringLiteral("the folder %1 cannot be made").arg(folder);
        return QString();
    }
    if (!QFileInfo(folder).isWritable()) {
        *error = QStringLiteral("nothing can be written to the folder %1").arg(folder);
        return QString();
    }
    const QString time =
            QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH-mm-ss"));
    QString name = QStringLiteral("%1/Camera %2%3").arg(folder, time, suffix);
    for (int number = 2; isTaken(name); ++number)
        name = QStringLiteral("%1/Camera %2 (%3)%4")
                       .arg(folder, time, QString::number(number), suffix);
    return name;
}

} // namespace Viewer
