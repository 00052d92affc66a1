// SPDX-License-Identifier: BSD-3-Clause
// Shows a camera; a click or the space bar takes the next one. Nothing in here is of Ocelle.
import QtMultimedia 5.15
import QtQuick 2.15
import QtQuick.Window 2.15

Window {
    id: window

    // For main.cpp
    readonly property bool isShowing: camera.cameraStatus === Camera.ActiveStatus
    readonly property string error: QtMultimedia.availableCameras.length === 0
        ? qsTr("There is no camera. \"ocelle doctor\" tells why.") : camera.errorString

    visible: true
    width: 640
    height: 480
    color: "black"
    title: camera.displayName

    Camera {
        id: camera

        property int place: 0

        function next() {
            if (QtMultimedia.availableCameras.length === 0)
                return
            place = (place + 1) % QtMultimedia.availableCameras.length
            deviceId = QtMultimedia.availableCameras[place].deviceId
        }
    }
    VideoOutput {
        anchors.fill: parent
        autoOrientation: true
        focus: true
        source: camera
        Keys.onSpacePressed: camera.next()
        MouseArea {
            anchors.fill: parent
            onClicked: camera.next()
        }
    }
    Text {
        anchors.centerIn: parent
        width: parent.width * 0.8
        color: "white"
        horizontalAlignment: Text.AlignHCenter
        text: window.error
        wrapMode: Text.Wrap
    }
}
