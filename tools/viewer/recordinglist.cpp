// SPDX-License-Identifier: BSD-3-Clause
#include "recordinglist.h"

#include <QDir>
#include <QLocale>
#include <QStandardPaths>

namespace Viewer {

RecordingList::RecordingList(QObject *parent)
    : QObject(parent)
{
    refresh();
}

void RecordingList::refresh()
{
    m_files.clear();
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::MoviesLocation));
    const QStringList names = { QStringLiteral("Camera *.mkv") };
    for (const QFileInfo &file : folder.entryInfoList(names, QDir::Files, QDir::Time)) {
        m_files.append(QVariantMap {
                { QStringLiteral("path"), file.absoluteFilePath() },
                { QStringLiteral("name"), file.completeBaseName() },
                { QStringLiteral("size"),
                  QLocale().formattedDataSize(file.size(), 1, QLocale::DataSizeSIFormat) } });
    }
    emit filesChanged();
}

} // namespace Viewer
