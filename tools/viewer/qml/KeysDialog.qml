// SPDX-License-Identifier: BSD-3-Clause
import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

Dialog {
    id: dialog

    readonly property var lines: [
        ["P", "Take a picture"], ["R", "Start or end a recording"], ["C", "Next camera"],
        ["S", "Settings"], ["V", "Recordings"], ["L", "Play the last recording"],
        ["I", "Statistics"], ["F, F11", "Full screen"], ["Esc", "Close, or back to the camera"],
        ["Ctrl+Q", "Quit"]
    ]

    title: "Keys"
    modal: true
    focus: true
    Overlay.modal: Rectangle {
        color: "#80000000"
    }
    footer: DialogButtonBox {
        TextButton {
            objectName: "keysClose"
            text: "Close"
            DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
        }
    }

    GridLayout {
        columns: 2
        columnSpacing: 24

        Repeater {
            model: dialog.lines.length * 2

            Label {
                text: dialog.lines[Math.floor(index / 2)][index % 2]
                font.bold: index % 2 === 0
            }
        }
    }
}
