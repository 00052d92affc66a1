// SPDX-License-Identifier: BSD-3-Clause
import QtQuick 2.15
import QtQuick.Controls 2.15

// A button that is only a picture; its name and key are told when the pointer rests on it.
ToolButton {
    id: button

    property string name
    property string key

    implicitWidth: 48
    implicitHeight: 48
    focusPolicy: Qt.StrongFocus
    display: AbstractButton.IconOnly
    Accessible.name: name
    ToolTip.text: key !== "" ? name + " (" + key + ")" : name
    ToolTip.visible: hovered
    ToolTip.delay: 700
    Keys.forwardTo: buttonKeys

    Rectangle {
        anchors.fill: parent
        anchors.margins: 2
        radius: width / 2
        color: "transparent"
        border.width: 2
        border.color: "#7cb7e8"
        visible: button.visualFocus
    }

    ButtonKeys {
        id: buttonKeys
        pressed: button
    }
}
