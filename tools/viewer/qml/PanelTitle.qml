// SPDX-License-Identifier: BSD-3-Clause
import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

RowLayout {
    id: title

    property alias text: label.text

    signal closed

    Layout.fillWidth: true

    Label {
        id: label
        Layout.fillWidth: true
        font.pixelSize: 18
    }
    IconButton {
        name: "Close"
        key: "Esc"
        icon.source: "icons/close.svg"
        onClicked: title.closed()
    }
}
