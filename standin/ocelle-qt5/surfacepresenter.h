#pragma once

#include "pictureconverter.h"
#include "pictureformat.h"
#include "picturemailbox.h"

#include <QAbstractVideoSurface>
#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>

namespace Veltra {
namespace Ocelle {

/*!
 * Takes pictures from the mailbox and presents them on one surface, on that surface's thread.
 *
 * It is a child of the surface, and so goes to another thread with it and is destroyed with it. The
 * surface may run an event loop, and change or destroy any object here, from within every call.
 *
 * A surface that somebody else stopped is started again with the next picture. One that takes no
 * format that can be offered, or does not start, is asked again when the pictures change, when it
 * says that its formats did, or after stop().
 *
 * Threads: the surface's, but for the constructor, setUp() and the post functions.
 * Owner:   the surface; itself before it is that, and once it is retired.
 * Errors:  pictures that cannot be shown are dropped and counted, and reported once in the log.
 */
class SurfacePresenter : public QObject
{
    Q_OBJECT
public:
    static void create(const std::shared_ptr<PictureMailbox> &mailbox,
                       QAbstractVideoSurface *surface);
    ~SurfacePresenter() override;

    // Any thread that keeps it from being destroyed meanwhile
    void postAttach();
    void postWork();
    void postRetire();

    /*! Stops the surface and destroys the presenter, now or when the surface's call returns. */
    void retire();

protected:
    void customEvent(QEvent *event) override;

private slots:
    void onSupportedFormatsChanged();

private:
    using Outcome = PictureMailbox::Outcome;
    using Self = QPointer<SurfacePresenter>; // null once a call to the surface has destroyed it

    SurfacePresenter(const std::shared_ptr<PictureMailbox> &mailbox,
                     QAbstractVideoSurface *surface);

    void attach();
    void work();
    Outcome present(const PictureMailbox::Task &task, const Self &self);
    bool isPresentable(const GraphicBuffer &buffer);
    bool prepare(const PictureFormat &format, const PictureMailbox::Task &task, const Self &self);
    bool negotiate(const PictureFormat &format, const PictureMailbox::Task &task, const Self &self);
    void reportRefusal(const PictureFormat &format,
                       const QList<QVideoFrame::PixelFormat> &supported, bool asked);
    void stopSurface();

    const std::shared_ptr<PictureMailbox> m_mailbox;
    const QPointer<QAbstractVideoSurface> m_surface;
    const QAbstractVideoSurface *const m_surfaceKey; // compared only

    bool m_busy = false;    // in work(), perhaps in a call to the surface
    bool m_retired = false; // to be destroyed when no longer busy
    bool m_started = false; // the surface, by this, for m_format as m_pixelFormat
    bool m_restart = false; // the surface wants to be started anew
    PictureFormat m_format;
    QVideoFrame::PixelFormat m_pixelFormat = QVideoFrame::Format_Invalid;
    std::optional<PictureFormat> m_refused;              // what there is no use in asking for again
    QVector<QVideoFrame::PixelFormat> m_reportedFormats; // whose refusal was reported
    PictureConverter m_converter;
};

} // namespace Ocelle
} // namespace Veltra
