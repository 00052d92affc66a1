// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoSurface>
#include <QVector>

#include <optional>

/*!
 * An application's own video surface: takes the back end's pictures as they are and notes what each
 * of them shows.
 *
 * Threads: only the one it lives on; a picture presented elsewhere is counted in strays.
 */
class PictureSurface : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    struct Picture
    {
        std::optional<quint32> sequence; // nothing where the picture is not of the pattern camera
        QSize size;
        QVideoFrame::PixelFormat format;
        qint64 startTime;       // microseconds
        const void *firstPlane; // where its luma is, to tell copies apart
        int lumaMean;
    };

    using QAbstractVideoSurface::QAbstractVideoSurface;

    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override;
    bool start(const QVideoSurfaceFormat &format) override;
    void stop() override;
    bool present(const QVideoFrame &frame) override;

    bool lastIsNewerThan(quint32 sequence) const;
    /*! Whether the sequence numbers in the pictures only ever go up. */
    bool sequenceRises() const;

    QVector<Picture> pictures;
    int starts = 0;
    int stops = 0;
    int strays = 0;
};
