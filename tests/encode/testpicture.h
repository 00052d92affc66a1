// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoBuffer>
#include <QVideoFrame>

#include <atomic>
#include <memory>

/*! A picture in ordinary memory, planes without padding, filled with \a fill. */
QVideoFrame testPicture(qint64 time = 0, QVideoFrame::PixelFormat format = QVideoFrame::Format_NV12,
                        const QSize &size = QSize(64, 48), int fill = 0);

/*! What happens to a TrackedBuffer, which may be gone. Any thread. */
struct BufferTrack
{
    std::atomic<int> maps { 0 };
    std::atomic<int> unmaps { 0 };
    std::atomic<int> buffers { 0 }; // alive
};

/*! One plane of memory of which the test sees how it is used. */
class TrackedBuffer : public QAbstractVideoBuffer
{
public:
    TrackedBuffer(std::shared_ptr<BufferTrack> track, int bytes, int bytesPerLine);
    ~TrackedBuffer() override;

    MapMode mapMode() const override;
    uchar *map(MapMode mode, int *bytes, int *bytesPerLine) override;
    void unmap() override;

    std::atomic<bool> mapFails { false };

private:
    const std::shared_ptr<BufferTrack> m_track;
    QByteArray m_memory;
    const int m_bytesPerLine;
    std::atomic<MapMode> m_mapMode { NotMapped };
};

/*! An NV12 picture of 64x48 whose life \a track tells. */
QVideoFrame trackedPicture(const std::shared_ptr<BufferTrack> &track, qint64 time = 0);
