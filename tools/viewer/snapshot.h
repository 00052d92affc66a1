// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "rawpictures.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

namespace Viewer {

/*!
 * Saves the next picture of a camera as PNG in the user's pictures folder.
 *
 * Threads: the application thread; the file is written on another one.
 * Errors:  failed() with a text.
 */
class Snapshot : public QObject
{
    Q_OBJECT
    Q_PROPERTY(Viewer::RawPictures *source READ source WRITE setSource NOTIFY sourceChanged)
    Q_PROPERTY(bool busy READ isBusy NOTIFY busyChanged)
public:
    explicit Snapshot(QObject *parent = nullptr);

    RawPictures *source() const { return m_source; }
    void setSource(RawPictures *source);
    bool isBusy() const { return m_isBusy; }
    /*! saved() or failed() follows; nothing happens while it is busy. */
    Q_INVOKABLE void take();

signals:
    void sourceChanged();
    void busyChanged();
    void saved(const QString &file);
    void failed(const QString &error);

private:
    void onPicture(const QVideoFrame &frame);
    void stopWaiting();
    void finish(const QString &file, const QString &error);

    QPointer<RawPictures> m_source; // QML deletes it first, where both go
    QTimer m_patience;              // while it waits for a picture
    bool m_isBusy = false;
};

} // namespace Viewer
