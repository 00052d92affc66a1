// SPDX-License-Identifier: BSD-3-Clause
import QtMultimedia 5.15
import QtQuick 2.15

// A VideoOutput that can be mirrored.
Item {
    id: picture

    property alias source: output.source
    property alias filters: output.filters
    property alias flushMode: output.flushMode
    property alias orientation: output.orientation
    property bool mirrored: false
    readonly property rect contentRect: output.contentRect // where the video is
    readonly property size size: Qt.size(output.sourceRect.width, output.sourceRect.height)

    VideoOutput {
        id: output
        anchors.fill: parent
        transform: Scale {
            origin.x: output.width / 2
            xScale: picture.mirrored ? -1 : 1
        }
    }
}
