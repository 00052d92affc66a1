// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QRasterWindow>

namespace Tool {

class PreviewSurface;

/*!
 * Shows the newest picture of a surface, as large as fits; Escape or Q closes it.
 *
 * Owner: whoever made it; the surface is borrowed and outlives it.
 */
class PreviewWindow : public QRasterWindow
{
    Q_OBJECT
public:
    explicit PreviewWindow(const PreviewSurface *surface);

    /*! Opens it for pictures of that size, or smaller where the screen is. */
    void open(QSize pictures);

signals:
    void closed();

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;

private:
    const PreviewSurface *const m_surface;
};

} // namespace Tool
