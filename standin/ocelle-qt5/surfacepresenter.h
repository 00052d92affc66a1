// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "pictureconverter.h"
#include "pictureformat.h"
#include "picturemailbox.h"
#include "presenterwaker.h"

#include <QAbstractVideoSurface>
#include <QObject>
#include <QPointer>

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <utility>

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

    /*! What wakes it, once it is on the surface's thread; not while that thread may be attaching it. */
    std::shared_ptr<PresenterWaker> waker() const { return m_waker; }

    // Any thread that keeps it from being destroyed meanwhile
    void postAttach();
    void postWork();
    void postRetire();

    /*! Adds what became of the pictures that it took. */
    void addOutcomes(VideoOutputStatistics &statistics) const;

    // The surface's thread
    /*! Takes the pictures that wait from the mailbox and presents them. */
    void work();
    /*! Stops the surface and destroys the presenter, now or when the surface's call returns. */
    void retire();

protected:
    bool event(QEvent *event) override;
    void customEvent(QEvent *event) override;

private slots:
    void onSupportedFormatsChanged();

private:
    enum class Outcome { Presented, Refused, Dropped };

    /*! False once a call to the surface has destroyed the presenter; a QPointer that costs little. */
    class Self
    {
    public:
        explicit Self(SurfacePresenter *presenter)
            : m_presenter(presenter)
            , m_outer(std::exchange(presenter->m_self, this))
        {
        }
        ~Self()
        {
            if (m_presenter)
                m_presenter->m_self = m_outer;
        }
        Self(const Self &) = delete;
        Self &operator=(const Self &) = delete;

        explicit operator bool() const { return m_presenter; }

    private:
        friend class SurfacePresenter;
        SurfacePresenter *m_presenter;
        Self *const m_outer; // further up the stack
    };

    SurfacePresenter(const std::shared_ptr<PictureMailbox> &mailbox,
                     QAbstractVideoSurface *surface);

    void attach();
    void leaveWaker();
    void count(Outcome outcome);
    Outcome present(const PictureMailbox::Task &task, const Self &self);
    bool isPresentable(const GraphicBuffer &buffer);
    QVideoFrame wrap(const std::shared_ptr<GraphicBuffer> &buffer);
    bool prepare(const PictureFormat &format, const PictureMailbox::Task &task, const Self &self);
    bool negotiate(const PictureFormat &format, const PictureMailbox::Task &task, const Self &self);
    void reportRefusal(const PictureFormat &format,
                       const QList<QVideoFrame::PixelFormat> &supported, bool asked);
    void stopSurface();

    const std::shared_ptr<PictureMailbox> m_mailbox;
    const QPointer<QAbstractVideoSurface> m_surface;
    const QAbstractVideoSurface *const m_surfaceKey; // compared only
    std::shared_ptr<PresenterWaker> m_waker;         // of its thread; null before and in between

    // Written on the surface's thread
    std::array<std::atomic<quint64>, 3> m_outcomes {}; // pictures, by Outcome

    Self *m_self = nullptr;   // the innermost on the stack
    bool m_busy = false;      // in work(), perhaps in a call to the surface
    bool m_wokenBusy = false; // woken meanwhile, from an event loop inside that call
    bool m_retired = false;   // to be destroyed when no longer busy
    bool m_started = false;   // the surface, by this, for m_format as m_pixelFormat
    bool m_restart = false;   // the surface wants to be started anew
    PictureFormat m_format;
    QVideoFrame::PixelFormat m_pixelFormat = QVideoFrame::Format_Invalid;
    std::optional<PictureFormat> m_refused;              // what there is no use in asking for again
    QVector<QVideoFrame::PixelFormat> m_reportedFormats; // whose refusal was reported
    PictureConverter m_converter;
};

} // namespace Ocelle
} // namespace Veltra
