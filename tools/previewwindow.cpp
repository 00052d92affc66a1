#include "previewwindow.h"

#include "frameimage.h"
#include "previewsurface.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScreen>

namespace Tool {

PreviewWindow::PreviewWindow(const PreviewSurface *surface)
    : m_surface(surface)
{
}

void PreviewWindow::open(QSize pictures)
{
    const QSize room = screen() != nullptr ? screen()->availableSize() * 0.9 : pictures;
    if (pictures.width() > room.width() || pictures.height() > room.height())
        pictures.scale(room, Qt::KeepAspectRatio);
    resize(pictures);
    show();
}

void PreviewWindow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(QRect(QPoint(), size()), Qt::black);
    const QVideoFrame frame = m_surface->frame();
    if (!frame.isValid())
        return;
    const qreal ratio = devicePixelRatio();
    QImage image = toImage(frame, m_surface->isMirrored(),
                           frame.size().scaled(size() * ratio, Qt::KeepAspectRatio));
    image.setDevicePixelRatio(ratio);
    const QSize shown = image.size() / ratio;
    painter.drawImage((width() - shown.width()) / 2, (height() - shown.height()) / 2, image);
}

void PreviewWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape || event->key() == Qt::Key_Q)
        close();
}

bool PreviewWindow::event(QEvent *event)
{
    const bool handled = QRasterWindow::event(event);
    if (event->type() == QEvent::Close)
        emit closed();
    return handled;
}

} // namespace Tool
