// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QCamera>
#include <QCameraViewfinderSettings>
#include <QObject>
#include <QPointer>
#include <QSize>
#include <QStringList>

namespace Viewer {

/*!
 * The sizes and frame rates that a camera offers, and the ones it is to have.
 *
 * Threads: the application thread.
 * Units:   pixels, pictures per second.
 * Errors:  failed(), where what was wished for is not offered; the camera's first settings are taken
 *          then.
 */
class ViewfinderChoice : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QStringList sizes READ sizes NOTIFY changed)
    Q_PROPERTY(QStringList rates READ rates NOTIFY changed) // at the chosen size
    Q_PROPERTY(int sizeIndex READ sizeIndex NOTIFY changed)
    Q_PROPERTY(int rateIndex READ rateIndex NOTIFY changed)
    Q_PROPERTY(QSize size READ size NOTIFY changed)
    Q_PROPERTY(qreal rate READ rate NOTIFY changed)
public:
    using QObject::QObject;

    QStringList sizes() const;
    QStringList rates() const;
    int sizeIndex() const;
    int rateIndex() const;
    QSize size() const { return m_chosen.resolution(); }
    qreal rate() const { return m_chosen.maximumFrameRate(); }

    /*! What the next camera is to have, where it offers that; no size and 0 leave it to the camera. */
    Q_INVOKABLE void wish(const QSize &size, qreal rate);
    /*! Reads what QML's \a camera, which is loaded, offers, and gives it its settings. */
    Q_INVOKABLE void load(QObject *camera);
    Q_INVOKABLE void clear();
    Q_INVOKABLE void chooseSize(int index); // keeps the rate where that size has it
    Q_INVOKABLE void chooseRate(int index);

signals:
    void changed();
    void failed(const QString &error);

private:
    QList<QSize> offeredSizes() const;
    QList<qreal> offeredRates() const;
    void apply(const QCameraViewfinderSettings &settings);

    QPointer<QCamera> m_camera; // QML's
    QList<QCameraViewfinderSettings> m_offered;
    QCameraViewfinderSettings m_chosen;
    QSize m_wishedSize;
    qreal m_wishedRate = 0;
};

} // namespace Viewer
