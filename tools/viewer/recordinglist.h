// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QObject>
#include <QVariantList>

namespace Viewer {

/*!
 * The viewer's own recordings in the user's videos folder, the newest first.
 *
 * Threads: the application thread.
 */
class RecordingList : public QObject
{
    Q_OBJECT
    /*! Objects with path, name and size, which is for people. */
    Q_PROPERTY(QVariantList files READ files NOTIFY filesChanged)
public:
    explicit RecordingList(QObject *parent = nullptr);

    QVariantList files() const { return m_files; }
    Q_INVOKABLE void refresh();

signals:
    void filesChanged();

private:
    QVariantList m_files;
};

} // namespace Viewer
