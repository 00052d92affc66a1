// SPDX-License-Identifier: BSD-3-Clause
import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

// The buttons below the preview.
Rectangle {
    id: bar

    property var view // the CameraView

    implicitHeight: 88
    color: "#242424"

    Row {
        anchors.centerIn: parent
        spacing: 24

        ShutterButton {
            objectName: "photoButton"
            name: "Take a picture"
            key: "P"
            enabled: bar.view.isStreaming && !bar.view.snapshot.busy
            onClicked: bar.view.snapshot.take()
        }
        ShutterButton {
            objectName: "recordButton"
            name: bar.view.recorder.active ? "Stop recording" : "Record"
            key: "R"
            isRecord: true
            isActive: bar.view.recorder.active
            enabled: bar.view.isStreaming || bar.view.recorder.active
            onClicked: bar.view.toggleRecording()
        }
    }
    IconButton {
        objectName: "recordingsButton"
        anchors.left: parent.left
        anchors.leftMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        name: "Recordings"
        key: "V"
        icon.source: "icons/recordings.svg"
        enabled: !bar.view.recorder.active
        onClicked: bar.view.recordingsAsked()
    }
    IconButton {
        objectName: "switchButton"
        anchors.right: parent.right
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        name: "Next camera"
        key: "C"
        icon.source: "icons/switch.svg"
        enabled: bar.view.cameras.count > (bar.view.isPresent ? 1 : 0) && !bar.view.recorder.active
        onClicked: bar.view.openNext()
    }
}
