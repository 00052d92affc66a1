// SPDX-License-Identifier: BSD-3-Clause
import QtQuick 2.15
import QtQuick.Controls 2.15

// A button of words alone.
Button {
    id: button

    flat: true
    highlighted: true
    font.capitalization: Font.MixedCase
    Keys.forwardTo: buttonKeys

    ButtonKeys {
        id: buttonKeys
        pressed: button
    }
}
