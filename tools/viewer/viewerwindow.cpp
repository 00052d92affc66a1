// SPDX-License-Identifier: BSD-3-Clause
#include "viewerwindow.h"

#include "cameramodel.h"
#include "camerapreview.h"
#include "framemeter.h"
#include "player.h"
#include "rawpictures.h"
#include "recorder.h"
#include "recordinglist.h"
#include "snapshot.h"
#include "statistics.h"
#include "viewfinderchoice.h"

#include <QQuickWindow>
#include <QUrl>

// Qt wants it outside of every namespace.
static void initResources()
{
    Q_INIT_RESOURCE(viewer);
}

namespace Viewer {
namespace {

void registerTypes()
{
    const char *const uri = "Ocelle.Viewer";
    qmlRegisterType<CameraModel>(uri, 1, 0, "CameraModel");
    qmlRegisterType<CameraPreview>(uri, 1, 0, "CameraPreview");
    qmlRegisterType<FrameMeter>(uri, 1, 0, "FrameMeter");
    qmlRegisterType<Player>(uri, 1, 0, "Player");
    qmlRegisterType<RawPictures>(uri, 1, 0, "RawPictures");
    qmlRegisterType<Recorder>(uri, 1, 0, "Recorder");
    qmlRegisterType<RecordingList>(uri, 1, 0, "RecordingList");
    qmlRegisterType<Snapshot>(uri, 1, 0, "Snapshot");
    qmlRegisterType<Statistics>(uri, 1, 0, "Statistics");
    qmlRegisterType<ViewfinderChoice>(uri, 1, 0, "ViewfinderChoice");
}

} // namespace

ViewerWindow::ViewerWindow(const ViewerOptions &options)
{
    initResources(); // they are in a library
    registerTypes();
    m_engine.setInitialProperties({
            { QStringLiteral("wishedCamera"), options.camera },
            { QStringLiteral("wishedSize"), options.size },
            { QStringLiteral("wishedRate"), options.rate },
    });
    m_engine.load(QUrl(QStringLiteral("qrc:/viewer/Main.qml")));
}

QQuickWindow *ViewerWindow::window() const
{
    return qobject_cast<QQuickWindow *>(m_engine.rootObjects().value(0));
}

} // namespace Viewer
