// SPDX-License-Identifier: BSD-3-Clause
import QtMultimedia 5.15
import QtQuick 2.15

Item {
    property alias camera: source

    width: 640
    height: 480

    Camera {
        id: source
    }
    VideoOutput {
        anchors.fill: parent
        source: source
    }
}
