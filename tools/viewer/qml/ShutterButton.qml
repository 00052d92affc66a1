// SPDX-License-Identifier: BSD-3-Clause
import QtQuick 2.15
import QtQuick.Controls 2.15

// The round button of a camera: white takes a picture, red records.
AbstractButton {
    id: button

    property string name
    property string key
    property bool isRecord: false
    property bool isActive: false

    implicitWidth: 64
    implicitHeight: 64
    focusPolicy: Qt.StrongFocus
    opacity: enabled ? 1 : 0.35
    Accessible.name: name
    ToolTip.text: name + " (" + key + ")"
    ToolTip.visible: hovered
    ToolTip.delay: 700
    Keys.forwardTo: buttonKeys

    background: Rectangle {
        radius: width / 2
        color: "transparent"
        border.width: 3
        border.color: button.visualFocus ? "#7cb7e8" : "#ffffff"
    }
    contentItem: Item {
        Rectangle {
            anchors.centerIn: parent
            width: button.isActive ? 26 : 48
            height: width
            radius: button.isActive ? 4 : width / 2
            color: button.isRecord ? "#e5484d" : "#ffffff"
            scale: button.down ? 0.88 : 1
        }
    }

    ButtonKeys {
        id: buttonKeys
        pressed: button
    }
}
