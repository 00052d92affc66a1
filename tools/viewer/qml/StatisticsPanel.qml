// SPDX-License-Identifier: BSD-3-Clause
import Ocelle.Viewer 1.0
import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

// What the last second came to.
Rectangle {
    id: panel

    property Statistics figures
    property string codecName
    property int codecQueue: -1 // negative where nothing is coded
    readonly property var lines: [
        ["Delivered", figures.delivered.toFixed(1) + " pictures/s"],
        ["Shown", figures.shown.toFixed(1) + " pictures/s"],
        ["Latency", figures.latency < 0 ? "–" : figures.latency.toFixed(1) + " ms, at most "
                                          + figures.worstLatency.toFixed(1) + " ms"],
        ["Queue", figures.queued + " for the screen"
         + (codecQueue < 0 ? "" : ", " + codecQueue + " in the " + codecName)],
        ["Dropped", figures.dropped + ", missing " + figures.missing],
        ["CPU", figures.cpu.toFixed(0) + " % of one core"]
    ]

    implicitWidth: grid.implicitWidth + 24
    implicitHeight: grid.implicitHeight + 16
    radius: 6
    color: "#b0000000"

    GridLayout {
        id: grid
        anchors.centerIn: parent
        columns: 2
        columnSpacing: 12
        rowSpacing: 2

        Repeater {
            model: panel.lines.length * 2

            Label {
                font.pixelSize: 13
                opacity: index % 2 === 0 ? 0.7 : 1
                text: panel.lines[Math.floor(index / 2)][index % 2]
            }
        }
    }
}
