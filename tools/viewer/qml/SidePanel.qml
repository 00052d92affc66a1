// SPDX-License-Identifier: BSD-3-Clause
import QtQuick 2.15
import QtQuick.Controls 2.15

// What slides in beside the picture where there is room, else over its lower part.
Drawer {
    id: panel

    property bool isNarrow: false
    readonly property real shownWidth: isNarrow ? 0 : position * width

    edge: isNarrow ? Qt.BottomEdge : Qt.RightEdge
    width: isNarrow ? parent.width : 340
    height: isNarrow ? Math.min(parent.height * 0.66, 460) : parent.height
    modal: isNarrow
    dim: false
    dragMargin: 0 // opened by its button and key alone
    focus: true
    background: Rectangle {
        color: "#2b2b2b"
    }
    // One that closes itself by Esc keeps the window's keys from working, that one included.
    closePolicy: isNarrow ? Popup.CloseOnEscape | Popup.CloseOnPressOutside : Popup.NoAutoClose
}
