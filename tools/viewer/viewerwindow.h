// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "vieweroptions.h"

#include <QQmlApplicationEngine>

class QQuickWindow;

namespace Viewer {

/*!
 * The viewer's window, made of the QML in its resources.
 *
 * Threads: the application thread.
 */
class ViewerWindow
{
public:
    explicit ViewerWindow(const ViewerOptions &options);

    /*! Null where the QML, or a module that it needs, could not be loaded, which Qt has logged. */
    QQuickWindow *window() const;

private:
    QQmlApplicationEngine m_engine;
};

} // namespace Viewer
