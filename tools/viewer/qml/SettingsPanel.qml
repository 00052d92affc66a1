// SPDX-License-Identifier: BSD-3-Clause
import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

SidePanel {
    id: panel

    property var view // the CameraView
    readonly property var bitRates: [500000, 1000000, 2000000, 4000000, 8000000, 16000000]

    Flickable {
        anchors.fill: parent
        contentHeight: column.height + 24
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        ColumnLayout {
            id: column
            x: 16
            y: 8
            width: parent.width - 32
            spacing: 6

            PanelTitle {
                text: "Settings"
                onClosed: panel.close()
            }
            Choice {
                objectName: "cameraChoice"
                Layout.fillWidth: true
                enabled: !panel.view.recorder.active
                name: "Camera"
                model: panel.view.cameras
                textRole: "name"
                // The count is read so that it is looked up anew when cameras come and go.
                index: panel.view.cameras.count > 0
                       ? panel.view.cameras.indexOf(panel.view.cameraId) : -1
                onChosen: panel.view.choose(panel.view.cameras.idAt(index))
            }
            Choice {
                objectName: "sizeChoice"
                Layout.fillWidth: true
                enabled: !panel.view.recorder.active
                name: "Size"
                model: panel.view.choice.sizes
                index: panel.view.choice.sizeIndex
                onChosen: panel.view.choice.chooseSize(index)
            }
            Choice {
                objectName: "rateChoice"
                Layout.fillWidth: true
                enabled: !panel.view.recorder.active
                name: "Frame rate"
                model: panel.view.choice.rates
                index: panel.view.choice.rateIndex
                onChosen: panel.view.choice.chooseRate(index)
            }
            Label {
                Layout.topMargin: 12
                text: "Recordings"
                font.bold: true
            }
            Choice {
                objectName: "codecChoice"
                Layout.fillWidth: true
                enabled: !panel.view.recorder.active
                name: "Codec"
                model: panel.view.recorder.codecs.map(name => name.toUpperCase())
                index: panel.view.recorder.codecs.indexOf(panel.view.codec)
                onChosen: panel.view.codec = panel.view.recorder.codecs[index]
            }
            Choice {
                objectName: "bitRateChoice"
                Layout.fillWidth: true
                enabled: !panel.view.recorder.active
                name: "Bit rate"
                model: panel.bitRates.map(rate => rate / 1e6 + " Mbit/s")
                index: panel.bitRates.indexOf(panel.view.bitRate)
                onChosen: panel.view.bitRate = panel.bitRates[index]
            }
            Label {
                Layout.fillWidth: true
                Layout.topMargin: 8
                visible: panel.view.recorder.active
                text: "They can be changed when the recording has ended."
                wrapMode: Text.Wrap
                opacity: 0.7
            }
        }
    }
}
