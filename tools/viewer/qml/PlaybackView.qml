// SPDX-License-Identifier: BSD-3-Clause
import Ocelle.Viewer 1.0
import QtMultimedia 5.15
import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

// Plays a recording.
FocusScope {
    id: view

    property string file
    readonly property string name: file.slice(file.lastIndexOf("/") + 1)
    property alias player: videoPlayer

    signal closed

    function open(path) {
        file = path
        visible = true
        playButton.forceActiveFocus()
        play()
    }
    function play() {
        problem.hide()
        videoPlayer.play(file)
    }
    function close() {
        videoPlayer.stop()
        visible = false
        closed()
    }
    function toggleStatistics() {
        statisticsPanel.visible = !statisticsPanel.visible
    }
    function clock(seconds) {
        const whole = Math.floor(seconds)
        return Math.floor(whole / 60) + ":" + String(whole % 60).padStart(2, "0")
    }

    Player {
        id: videoPlayer
        onFailed: problem.show(error.charAt(0).toUpperCase() + error.slice(1) + ".", "Try again")
    }

    FrameMeter {
        id: frameMeter
    }

    Statistics {
        id: figures
        meter: frameMeter
        surface: videoPlayer.outputSurface
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 48
            color: "#242424"

            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 4
                anchors.rightMargin: 4
                spacing: 4

                IconButton {
                    objectName: "backButton"
                    name: "Back to the camera"
                    key: "Esc"
                    icon.source: "icons/back.svg"
                    onClicked: view.close()
                }
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 0

                    Label {
                        Layout.fillWidth: true
                        text: view.name
                        font.bold: true
                        elide: Text.ElideMiddle
                    }
                    Label {
                        Layout.fillWidth: true
                        visible: text !== ""
                        text: videoPlayer.details
                        font.pixelSize: 12
                        opacity: 0.7
                        elide: Text.ElideRight
                    }
                }
                IconButton {
                    name: "Statistics"
                    key: "I"
                    icon.source: "icons/statistics.svg"
                    checked: statisticsPanel.visible
                    onClicked: view.toggleStatistics()
                }
            }
        }

        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            Picture {
                objectName: "playback"
                anchors.fill: parent
                source: videoPlayer
                filters: [frameMeter]
                flushMode: VideoOutput.LastFrame
                visible: videoPlayer.hasPicture // else that is the last one of another file
            }

            ColumnLayout {
                anchors.fill: parent
                anchors.margins: 12
                spacing: 8

                Message {
                    id: problem
                    objectName: "playbackProblem"
                    Layout.fillWidth: true
                    Layout.maximumWidth: 640
                    Layout.alignment: Qt.AlignHCenter
                    isError: true
                    onActed: view.play()
                }
                StatisticsPanel {
                    id: statisticsPanel
                    objectName: "playbackStatistics"
                    figures: figures
                    codecName: "decoder"
                    codecQueue: videoPlayer.playing ? videoPlayer.inside : -1
                    visible: false
                }
                Item {
                    Layout.fillHeight: true
                }
            }
        }

        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 64
            color: "#242424"

            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 12
                anchors.rightMargin: 20
                spacing: 12

                IconButton {
                    id: playButton
                    objectName: "playButton"
                    name: videoPlayer.playing ? "Stop" : "Play from the start"
                    icon.source: videoPlayer.playing ? "icons/stop.svg" : "icons/play.svg"
                    onClicked: videoPlayer.playing ? videoPlayer.stop() : view.play()
                }
                Label {
                    text: view.clock(videoPlayer.position)
                }
                ProgressBar {
                    Layout.fillWidth: true
                    to: Math.max(videoPlayer.duration, videoPlayer.position, 0.001)
                    value: videoPlayer.position
                    Accessible.name: "Position"
                }
                Label {
                    visible: videoPlayer.duration > 0
                    text: view.clock(videoPlayer.duration)
                }
            }
        }
    }
}
