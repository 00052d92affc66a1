// SPDX-License-Identifier: BSD-3-Clause
import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

// A named list of which one is chosen; chosen() tells what its user chose, and the index stays bound.
RowLayout {
    id: choice

    property string name
    property alias model: box.model
    property alias textRole: box.textRole
    property int index: -1

    signal chosen(int index)

    spacing: 12

    Label {
        Layout.preferredWidth: 96
        text: choice.name
        color: "#ffffff" // also where nothing can be chosen
        opacity: enabled ? 0.8 : 0.6
    }
    ComboBox {
        id: box
        objectName: choice.objectName + "Box"
        Layout.fillWidth: true
        currentIndex: choice.index
        Accessible.name: choice.name
        // As Space does. The list that is open takes it when it is let go, which has to be left to it.
        Keys.onReleased: {
            const isReturn = event.key === Qt.Key_Return || event.key === Qt.Key_Enter
            event.accepted = event.isAutoRepeat || (isReturn && !popup.visible)
            if (isReturn && !popup.visible && !event.isAutoRepeat)
                popup.open()
        }
        onActivated: {
            choice.chosen(index)
            currentIndex = Qt.binding(() => choice.index)
        }
        onCountChanged: currentIndex = Qt.binding(() => choice.index)
    }
}
