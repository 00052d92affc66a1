// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoSurface>

#include <functional>

/*! Takes every picture and tells of it, at no cost worth measuring. */
class CountingSurface : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    explicit CountingSurface(std::function<void()> presented);

    quint64 pictures() const;

    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override;
    bool present(const QVideoFrame &frame) override;

private:
    const std::function<void()> m_presented;
    quint64 m_pictures = 0;
};
