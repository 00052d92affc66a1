// SPDX-License-Identifier: BSD-3-Clause
import QtQuick 2.15

// What a button's keys are forwarded to: Return presses it as Space does, and one that is held once.
Item {
    id: keys

    property Item pressed

    function press(event) {
        if (!event.isAutoRepeat)
            keys.pressed.clicked()
    }

    Keys.onReturnPressed: press(event)
    Keys.onEnterPressed: press(event) // of the keypad
    Keys.onSpacePressed: event.accepted = event.isAutoRepeat
    Keys.onReleased: event.accepted = event.key === Qt.Key_Space && event.isAutoRepeat
}
