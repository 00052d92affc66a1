// SPDX-License-Identifier: BSD-3-Clause
#include "surfacepresenter.h"

#include "picturevideobuffer.h"
#include "statisticsregistry.h"
#include "videooutputlog.h"

#include <QCoreApplication>
#include <QDebug>
#include <QThread>

#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr auto AttachEvent = QEvent::Type(QEvent::User + 1);
constexpr auto WorkEvent = QEvent::Type(QEvent::User + 2);
constexpr auto RetireEvent = QEvent::Type(QEvent::User + 3);

bool wantsRestart(QAbstractVideoSurface::Error error)
{
    return error == QAbstractVideoSurface::StoppedError ||
           error == QAbstractVideoSurface::IncorrectFormatError;
}

} // namespace

void SurfacePresenter::create(const std::shared_ptr<PictureMailbox> &mailbox,
                              QAbstractVideoSurface *surface)
{
    auto *const presenter = new SurfacePresenter(mailbox, surface);
    if (surface->thread() == QThread::currentThread())
        presenter->attach();
    else
        presenter->moveToThread(surface->thread());
    StatisticsRegistry::instance().add(surface, mailbox);
    mailbox->attach(presenter);
}

SurfacePresenter::SurfacePresenter(const std::shared_ptr<PictureMailbox> &mailbox,
                                   QAbstractVideoSurface *surface)
    : m_mailbox(mailbox)
    , m_surface(surface)
    , m_surfaceKey(surface)
{
}

SurfacePresenter::~SurfacePresenter()
{
    for (Self *self = m_self; self; self = self->m_outer)
        self->m_presenter = nullptr;
    if (m_mailbox->forget(this))
        StatisticsRegistry::instance().remove(m_surfaceKey, m_mailbox.get());
    if (m_waker)
        m_waker->forget(this);
}

void SurfacePresenter::postAttach()
{
    if (!parent())
        QCoreApplication::postEvent(this, new QEvent(AttachEvent));
}

void SurfacePresenter::postWork()
{
    QCoreApplication::postEvent(this, new QEvent(WorkEvent));
}

void SurfacePresenter::postRetire()
{
    QCoreApplication::postEvent(this, new QEvent(RetireEvent));
    deleteLater(); // which a thread still does when it ends before the event comes
}

bool SurfacePresenter::event(QEvent *event)
{
    if (event->type() == QEvent::ThreadChange)
        leaveWaker();
    return QObject::event(event);
}

void SurfacePresenter::customEvent(QEvent *event)
{
    switch (int(event->type())) {
    case AttachEvent:
        attach();
        break;
    case WorkEvent:
        work();
        break;
    case RetireEvent:
        m_retired = true;
        stopSurface();
        break;
    default:
        break;
    }
}

/*! Becomes the surface's child, on its thread. */
void SurfacePresenter::attach()
{
    if (!m_surface) {
        deleteLater(); // destroyed before its thread came here
        return;
    }
    if (m_surface->thread() != thread()) {
        moveToThread(m_surface->thread());
        postAttach();
        return;
    }
    setParent(m_surface);
    connect(m_surface, &QAbstractVideoSurface::supportedFormatsChanged, this,
            &SurfacePresenter::onSupportedFormatsChanged);
    m_waker = PresenterWaker::ofCurrentThread();
    m_mailbox->useWaker(this, m_waker);
}

/*! Goes to another thread, where events of its own wake it: they go with it. */
void SurfacePresenter::leaveWaker()
{
    if (!m_waker)
        return;
    m_mailbox->useWaker(this, nullptr);
    if (m_waker->forget(this))
        postWork();
    m_waker.reset();
}

void SurfacePresenter::retire()
{
    m_retired = true;
    const Self self(this);
    stopSurface();
    if (self && !m_busy)
        delete this;
}

void SurfacePresenter::onSupportedFormatsChanged()
{
    m_refused.reset();
    m_reportedFormats.clear();
}

void SurfacePresenter::addOutcomes(VideoOutputStatistics &statistics) const
{
    statistics.presented += m_outcomes[std::size_t(Outcome::Presented)];
    statistics.refused += m_outcomes[std::size_t(Outcome::Refused)];
    statistics.dropped += m_outcomes[std::size_t(Outcome::Dropped)];
}

void SurfacePresenter::count(Outcome outcome)
{
    // One thread writes: no need for an addition that others cannot get between.
    auto &counter = m_outcomes[std::size_t(outcome)];
    counter.store(counter.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

void SurfacePresenter::work()
{
    if (m_busy) { // in an event loop inside a call to the surface
        m_wokenBusy = true;
        return;
    }
    // All that waits, so that a drained decoder's last pictures are shown before the status that an
    // event behind them tells; but no more than can wait, since other events have to get their turn.
    int left = PictureQueue::Capacity;
    bool more;
    do {
        const PictureMailbox::Task task = m_mailbox->take(this);
        if (!task.current)
            return;
        const Self self(this);
        m_busy = true;
        for (const QString &report : std::as_const(task.reports))
            qCWarning(lcVideoOutput).noquote() << report;
        if (self && task.stopSurface) {
            onSupportedFormatsChanged();
            stopSurface();
        }
        if (self && task.present) {
            const Outcome outcome = present(task, self);
            if (self)
                count(outcome);
        }
        if (!self)
            return;
        m_busy = false;
        more = task.more;
    } while (more && !m_retired && --left > 0);
    if (std::exchange(m_wokenBusy, false) || more)
        m_mailbox->wakeAgain(this);
    if (m_retired)
        deleteLater();
}

SurfacePresenter::Outcome SurfacePresenter::present(const PictureMailbox::Task &task,
                                                    const Self &self)
{
    const auto &buffer = task.picture.buffer;
    if (!m_surface || !isPresentable(*buffer) ||
        !prepare(PictureFormat::of(task.picture), task, self))
        return Outcome::Dropped;

    const QVideoFrame frame = wrap(buffer);
    if (!frame.isValid() || m_mailbox->isStale(task))
        return Outcome::Dropped;
    if (m_surface->present(frame))
        return Outcome::Presented;
    if (self && m_surface)
        m_restart = wantsRestart(m_surface->error());
    return Outcome::Refused;
}

/*! The picture as the surface was started for it; not valid where it cannot be converted. */
QVideoFrame SurfacePresenter::wrap(const std::shared_ptr<GraphicBuffer> &buffer)
{
    if (m_waker) {
        if (const QVideoFrame *const shared = m_waker->sharedFrame(buffer.get(), m_pixelFormat))
            return *shared;
    }
    std::shared_ptr<const GraphicBuffer> shown = buffer;
    auto chroma = PictureVideoBuffer::Chroma::InOrder;
    if (!needsNoConversion(buffer->format, m_pixelFormat))
        shown = m_converter.convert(*buffer, m_pixelFormat);
    else if (m_pixelFormat == QVideoFrame::Format_YV12)
        chroma = PictureVideoBuffer::Chroma::Swapped;
    if (!shown)
        return QVideoFrame();
    QVideoFrame frame(new PictureVideoBuffer(std::move(shown), chroma),
                      QSize(buffer->width, buffer->height), m_pixelFormat);
    frame.setStartTime(buffer->timestamp);
    if (m_waker)
        m_waker->share(buffer.get(), frame);
    return frame;
}

bool SurfacePresenter::isPresentable(const GraphicBuffer &buffer)
{
    if (qtPixelFormat(buffer.format) == QVideoFrame::Format_Invalid) {
        if (m_mailbox->claimReport(PictureMailbox::Trouble::UnknownFormat)) {
            qCWarning(lcVideoOutput).noquote() << "Pictures of unknown pixel format"
                                               << pixelFormatName(buffer.format) << "are dropped";
        }
        return false;
    }
    if (!hasWholePlanes(buffer)) {
        if (m_mailbox->claimReport(PictureMailbox::Trouble::BadPicture)) {
            qCWarning(lcVideoOutput).noquote()
                    << "Pictures are dropped whose planes do not hold them, such as"
                    << pixelFormatName(buffer.format)
                    << QStringLiteral("of %1x%2 pixels").arg(buffer.width).arg(buffer.height);
        }
        return false;
    }
    return true;
}

/*! Whether the surface is started for \a format, which it is made to be if it can. */
bool SurfacePresenter::prepare(const PictureFormat &format, const PictureMailbox::Task &task,
                               const Self &self)
{
    if (m_started && format == m_format && !m_restart && m_surface->isActive())
        return true;
    if (m_refused && *m_refused == format)
        return false;
    stopSurface();
    if (!self || m_mailbox->isStale(task))
        return false;
    m_restart = false;
    const bool started = negotiate(format, task, self);
    if (!self || m_mailbox->isStale(task))
        return false;
    if (!started)
        m_refused = format;
    return started;
}

/*! Starts the surface with the best format it takes. */
bool SurfacePresenter::negotiate(const PictureFormat &format, const PictureMailbox::Task &task,
                                 const Self &self)
{
    // As long as this object lives, so does the surface.
    QAbstractVideoSurface *const surface = m_surface;
    if (!surface)
        return false;
    const auto supported = surface->supportedPixelFormats();
    bool asked = false;
    for (const QVideoFrame::PixelFormat candidate : presentableAs(format.format)) {
        if (!self || m_mailbox->isStale(task))
            return false;
        const QVideoSurfaceFormat offer = format.surfaceFormat(candidate);
        if (!supported.contains(candidate) || !surface->isFormatSupported(offer))
            continue;
        if (!self || m_mailbox->isStale(task))
            return false;
        // What the call leads to sees the surface as started, so that it can be stopped.
        asked = true;
        m_started = true;
        m_format = format;
        m_pixelFormat = candidate;
        const bool started = surface->start(offer);
        if (!self)
            return false;
        if (started && m_retired) { // before it was active, so that it could not be stopped then
            m_started = true;
            stopSurface();
            return false;
        }
        if (started)
            return true;
        m_started = false;
    }
    if (!m_mailbox->isStale(task))
        reportRefusal(format, supported, asked);
    return false;
}

void SurfacePresenter::reportRefusal(const PictureFormat &format,
                                     const QList<QVideoFrame::PixelFormat> &supported, bool asked)
{
    const QVideoFrame::PixelFormat own = qtPixelFormat(format.format);
    if (m_reportedFormats.contains(own))
        return;
    m_reportedFormats.append(own);
    qCWarning(lcVideoOutput).noquote()
            << (asked ? "The surface did not start" : "The surface takes no format that is offered")
            << QStringLiteral("for %1 of %2x%3 pixels: offered")
                       .arg(pixelFormatName(format.format))
                       .arg(format.width)
                       .arg(format.height)
            << presentableAs(format.format) << "surface takes" << supported;
}

void SurfacePresenter::stopSurface()
{
    QAbstractVideoSurface *const surface = m_surface; // null while it is being destroyed
    if (std::exchange(m_started, false) && surface && surface->isActive())
        surface->stop();
}

} // namespace Ocelle
} // namespace Veltra
