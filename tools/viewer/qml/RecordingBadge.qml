// SPDX-License-Identifier: BSD-3-Clause
import Ocelle.Viewer 1.0
import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

// How far a recording has come.
Rectangle {
    id: badge

    property Recorder recorder
    readonly property string text: {
        const seconds = Math.floor(recorder.seconds)
        const time = Math.floor(seconds / 60) + ":" + String(seconds % 60).padStart(2, "0")
        const size = recorder.bytes < 1e6 ? (recorder.bytes / 1e3).toFixed(0) + " kB"
                                          : (recorder.bytes / 1e6).toFixed(1) + " MB"
        return time + "   " + size + "   " + recorder.dropped + " dropped"
    }

    implicitWidth: row.implicitWidth + 24
    implicitHeight: 32
    radius: 16
    color: "#c0000000"

    RowLayout {
        id: row
        anchors.centerIn: parent
        spacing: 8

        Rectangle {
            implicitWidth: 12
            implicitHeight: 12
            radius: 6
            color: "#e5484d"

            SequentialAnimation on opacity {
                running: badge.visible
                loops: Animation.Infinite
                NumberAnimation { to: 0.3; duration: 700 }
                NumberAnimation { to: 1; duration: 700 }
            }
        }
        Label {
            text: badge.text
        }
    }
}
