// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "seenpicture.h"

#include <QAbstractVideoSurface>
#include <QRect>

#include <ocelle/videooutputqt5.h>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Compliance {

/*!
 * Looks into the platform's picture buffers, which only its own renderer can do.
 *
 * Threads: built and destroyed on the main thread, where it also sees the pictures, as long as
 *          that has an event loop; the rest from any thread.
 * Owner:   the Session.
 */
class PictureViewer : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    /*! \a onSeen is called on the main thread after each picture. */
    explicit PictureViewer(std::function<void()> onSeen);
    ~PictureViewer() override;

    void show(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer);
    void setViewport(const QRect &viewport);

    std::vector<SeenPicture> seen() const;
    int count() const;
    void clear();

    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override;
    bool present(const QVideoFrame &frame) override;

private:
    const std::function<void()> m_onSeen;
    Veltra::Ocelle::VideoOutputQt5 m_output;

    mutable std::mutex m_mutex; // guards m_seen
    std::vector<SeenPicture> m_seen;
};

} // namespace Compliance
