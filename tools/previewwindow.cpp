// SPDX-License-Identifier: BSD-3-Clause
#include "previewwindow.h"

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
    if (!m_surface->frame().isValid())
        return;
    const qreal ratio = devicePixelRatio();
    QImage image = m_surface->image(size() * ratio);
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
