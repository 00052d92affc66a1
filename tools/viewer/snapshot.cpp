// SPDX-License-Identifier: BSD-3-Clause
#include "snapshot.h"

#include "frameimage.h"
#include "mediafolder.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

namespace Viewer {
namespace {

constexpr int Patience = 3000; // ms without a picture

} // namespace

Snapshot::Snapshot(QObject *parent)
    : QObject(parent)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(Patience);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        stopWaiting();
        finish(QString(), QStringLiteral("the camera has delivered no picture"));
    });
}

void Snapshot::setSource(RawPictures *source)
{
    if (source == m_source)
        return;
    if (m_patience.isActive()) { // it waits for one of the other's
        stopWaiting();
        finish(QString(), QStringLiteral("the camera has delivered no picture"));
    }
    m_source = source;
    emit sourceChanged();
}

void Snapshot::take()
{
    if (m_isBusy)
        return;
    m_isBusy = true;
    emit busyChanged();
    RawPictures *const source = m_source;
    if (!source || !source->isAvailable()) {
        finish(QString(), QStringLiteral("there is no camera to take it with"));
        return;
    }
    connect(source, &RawPictures::pictureTaken, this, &Snapshot::onPicture);
    source->begin();
    m_patience.start();
}

void Snapshot::onPicture(const QVideoFrame &frame)
{
    stopWaiting();
    QString error;
    const QString file =
            newFileName(QStandardPaths::PicturesLocation, QStringLiteral(".png"), &error);
    if (file.isEmpty()) {
        finish(file, error);
        return;
    }
    const QPointer<Snapshot> self(this);
    QThreadPool::globalInstance()->start([self, frame, file] {
        QString trouble;
        Tool::saveImage(Tool::toImage(frame, false), file, &trouble);
        // Whether this is still there is looked at on its own thread.
        QMetaObject::invokeMethod(
                qApp,
                [self, file, trouble] {
                    if (self)
                        self->finish(file, trouble);
                },
                Qt::QueuedConnection);
    });
}

void Snapshot::stopWaiting()
{
    m_patience.stop();
    RawPictures *const source = m_source;
    if (!source)
        return;
    source->disconnect(this);
    source->end();
}

void Snapshot::finish(const QString &file, const QString &error)
{
    m_isBusy = false;
    emit busyChanged();
    if (error.isEmpty())
        emit saved(file);
    else
        emit failed(QStringLiteral("The picture was not saved: %1.").arg(error));
}

} // namespace Viewer
