// SPDX-License-Identifier: BSD-3-Clause
#include "viewertest.h"

#include <QImage>

using Veltra::Ocelle::PatternReading;
using Viewer::ViewerOptions;
using Viewer::ViewerWindow;

void ViewerTest::open(const ViewerOptions &options, QSize size)
{
    m_viewer.reset();
    m_viewer = std::make_unique<ViewerWindow>(options);
    m_window = m_viewer->window();
    QVERIFY(m_window);
    m_window->resize(size);
    m_window->requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(m_window));
    QTRY_COMPARE(m_window->size(), size);
}

void ViewerTest::reset()
{
    m_viewer.reset();
    m_window = nullptr;
    m_home.clear();
}

QObject *ViewerTest::find(const char *name) const
{
    QObject *const found = m_window->findChild<QObject *>(QString::fromLatin1(name));
    if (!found)
        qWarning("there is no object %s", name);
    return found;
}

QString ViewerTest::textOf(const char *message) const
{
    const QObject *const shown = find(message);
    return shown->property("visible").toBool() ? shown->property("text").toString() : QString();
}

QObject *ViewerTest::view(const char *property) const
{
    return find("cameraView")->property(property).value<QObject *>();
}

/*! What is read from the preview's own place in the window. */
std::optional<PatternReading> ViewerTest::reading() const
{
    const QQuickItem *const preview = item("preview");
    const QRectF place = preview->mapRectToScene(preview->property("contentRect").toRectF());
    const QImage image =
            m_window->grabWindow().copy(place.toRect()).convertToFormat(QImage::Format_RGB32);
    return Veltra::Ocelle::readPatternRgb32(image.constBits(), image.bytesPerLine(), image.width(),
                                            image.height());
}

void ViewerTest::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(m_window, key, modifiers);
}
