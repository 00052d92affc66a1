// SPDX-License-Identifier: BSD-3-Clause
import QtQuick 2.15
import QtQuick.Controls 2.15

// A line over the picture: an error, which stays, or a notice, which goes by itself.
Rectangle {
    id: message

    property bool isError: false
    property string text
    property string action
    property string subject // of the action
    property bool canAct: true
    // Where it would leave the words too little room
    readonly property bool isActionBelow: button.visible && button.implicitWidth > width * 0.4
    readonly property real wordsHeight: Math.max(words.implicitHeight + 16, closeButton.implicitHeight)

    signal acted

    function show(what, offered, about) {
        text = what
        action = offered || ""
        subject = about || ""
        visible = true
        if (!isError)
            timer.restart()
    }
    function hide() {
        visible = false
    }

    visible: false
    implicitHeight: wordsHeight + (isActionBelow ? button.implicitHeight : 0) + 8
    radius: 6
    color: isError ? "#f05c2226" : "#e0303030"
    border.color: isError ? "#e5484d" : "#505050"
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    Timer {
        id: timer
        interval: 6000
        onTriggered: message.hide()
    }

    Label {
        id: words
        objectName: message.objectName + "Text"
        x: 14
        y: 4 + (message.wordsHeight - height) / 2
        width: (message.isActionBelow || !button.visible ? closeButton.x : button.x) - x - 4
        text: message.text
        wrapMode: Text.Wrap
    }
    TextButton {
        id: button
        objectName: message.objectName + "Action"
        x: (message.isActionBelow ? message.width : closeButton.x) - width - 4
        y: 4 + (message.isActionBelow ? message.wordsHeight : (message.wordsHeight - height) / 2)
        visible: message.action !== ""
        enabled: message.canAct
        text: message.action
        onClicked: {
            message.hide()
            message.acted()
        }
    }
    IconButton {
        id: closeButton
        x: message.width - width - 2
        y: 4 + (message.wordsHeight - height) / 2
        name: "Close"
        icon.source: "icons/close.svg"
        onClicked: message.hide()
    }
}
