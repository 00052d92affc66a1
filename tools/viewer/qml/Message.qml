// SPDX-License-Identifier: BSD-3-Clause
import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

// A line over the picture: an error, which stays, or a notice, which goes by itself.
Rectangle {
    id: message

    property bool isError: false
    property string text
    property string action
    property string subject // of the action

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
    implicitHeight: row.implicitHeight + 8
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

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.leftMargin: 14
        anchors.rightMargin: 2
        spacing: 4

        Label {
            Layout.fillWidth: true
            Layout.topMargin: 8
            Layout.bottomMargin: 8
            text: message.text
            wrapMode: Text.Wrap
        }
        Button {
            objectName: message.objectName + "Action"
            visible: message.action !== ""
            text: message.action
            flat: true
            highlighted: true
            font.capitalization: Font.MixedCase
            onClicked: {
                message.hide()
                message.acted()
            }
        }
        IconButton {
            name: "Close"
            icon.source: "icons/close.svg"
            onClicked: message.hide()
        }
    }
}
