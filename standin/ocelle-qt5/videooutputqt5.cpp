// SPDX-License-Identifier: BSD-3-Clause
#include "framecopier.h"
#include "picturemailbox.h"
#include "statisticsregistry.h"
#include "surfacepresenter.h"

#include <QAbstractVideoSurface>
#include <QPointer>

#include <ocelle/videooutputqt5.h>

#include <memory>
#include <utility>

namespace Veltra {
namespace Ocelle {

class VideoOutputQt5Private
{
public:
    const std::shared_ptr<PictureMailbox> mailbox = std::make_shared<PictureMailbox>();
    FrameCopier copier;

    // The thread that owns the output
    QPointer<QAbstractVideoSurface> surface;
    const QAbstractVideoSurface *surfaceKey = nullptr; // compared only
    bool closing = false;                              // takes no surface any more
};

VideoOutputQt5::VideoOutputQt5(QObject *parent)
    : QObject(parent)
    , m_d(new VideoOutputQt5Private)
{
}

VideoOutputQt5::~VideoOutputQt5()
{
    m_d->closing = true;
    setVideoSurface(nullptr);
    delete m_d;
}

QAbstractVideoSurface *VideoOutputQt5::videoSurface() const
{
    return m_d->surface;
}

/*! A surface of this thread is stopped at once, one of another thread by an event there. */
void VideoOutputQt5::setVideoSurface(QAbstractVideoSurface *surface)
{
    if (surface && (m_d->surface == surface || m_d->closing))
        return;
    m_d->surface = surface;
    StatisticsRegistry::instance().remove(std::exchange(m_d->surfaceKey, surface),
                                          m_d->mailbox.get());
    const QPointer<VideoOutputQt5> self(this);
    if (SurfacePresenter *const presenter = m_d->mailbox->detach())
        presenter->retire();
    // Stopping the old surface may have led to another call here, or to the end of this object.
    if (self && surface && m_d->surface == surface)
        SurfacePresenter::create(m_d->mailbox, surface);
}

void VideoOutputQt5::setViewport(QRect viewport)
{
    m_d->mailbox->setViewport(viewport);
}

void VideoOutputQt5::setMirrored(bool mirrored)
{
    m_d->mailbox->setMirrored(mirrored);
}

/*! Never calls the surface: that is stopped by an event on its own thread. */
void VideoOutputQt5::stop()
{
    m_d->mailbox->stop();
}

void VideoOutputQt5::onGraphicBuffer(std::shared_ptr<GraphicBuffer> buffer)
{
    if (buffer)
        m_d->mailbox->deliver(std::move(buffer));
    else
        m_d->mailbox->reject(PictureMailbox::Trouble::BadPicture,
                             QStringLiteral("Null pictures are dropped"));
}

void VideoOutputQt5::onVideoFrame(const YCbCrFrame *frame)
{
    PictureMailbox &mailbox = *m_d->mailbox;
    if (!frame || !FrameCopier::isWhole(*frame)) {
        mailbox.reject(PictureMailbox::Trouble::BadPicture,
                       QStringLiteral("Frames are dropped that are null, without samples, too "
                                      "large or with lines shorter than their width"));
    } else if (auto copy = m_d->copier.copy(*frame)) {
        mailbox.deliverCopy(std::move(copy));
    } else {
        mailbox.drop();
    }
}

} // namespace Ocelle
} // namespace Veltra
