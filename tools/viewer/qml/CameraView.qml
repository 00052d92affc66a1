// SPDX-License-Identifier: BSD-3-Clause
import Ocelle.Viewer 1.0
import QtMultimedia 5.15
import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

// The preview of a camera and what is done with it.
FocusScope {
    id: view

    property bool isNarrow: false
    property string cameraId // the camera that was chosen, also while it is gone
    property string cameraName
    property string codec: recorder.codecs.length > 0 ? recorder.codecs[0] : ""
    property int bitRate: 4000000
    property var wish: null // of the command line, until the camera that it is for was opened
    readonly property bool isStreaming: loader.item !== null
                                        && loader.item.cameraStatus === Camera.ActiveStatus
    readonly property bool isPresent: loader.active
    property alias cameras: cameraModel
    property alias choice: settings
    property alias recorder: videoRecorder
    property alias snapshot: photo
    property alias statistics: figures

    signal settingsAsked
    signal recordingsAsked
    signal playAsked(string file)

    function begin(wishedCamera, wishedSize, wishedRate) {
        wish = { camera: wishedCamera, size: wishedSize, rate: wishedRate }
        const id = wishedCamera === "" ? cameraModel.preferred() : cameraModel.find(wishedCamera)
        open(id !== "" ? id : cameraModel.preferred())
        if (wishedCamera !== "" && id === "")
            problem.show(sentence(cameraModel.problem(wishedCamera)))
    }
    function passWish() {
        if (!wish || (wish.camera !== "" && cameraModel.find(wish.camera) !== cameraId))
            return
        settings.wish(wish.size, wish.rate)
        wish = null
    }
    // The one that is open has to be closed before, or it would be in its own way.
    function open(id) {
        problem.hide()
        cameraId = id
        cameraName = cameraModel.nameOf(id)
        if (loader.active)
            loader.active = false
        else
            start()
    }
    function start() {
        if (cameraModel.indexOf(cameraId) >= 0)
            loader.active = true
    }
    function choose(id) {
        if (id !== cameraId || !isPresent)
            open(id)
    }
    function openNext() {
        if (cameraModel.count === 0 || recorder.active)
            return
        choose(cameraModel.idAt((cameraModel.indexOf(cameraId) + 1) % cameraModel.count))
    }
    function toggleRecording() {
        if (recorder.active)
            recorder.stop()
        else
            recorder.start(codec, bitRate, settings.size, settings.rate)
    }
    function toggleStatistics() {
        statisticsPanel.visible = !statisticsPanel.visible
    }
    function sentence(text) {
        return text.charAt(0).toUpperCase() + text.slice(1) + (text.endsWith(".") ? "" : ".")
    }
    // One that was unplugged says so too, in its own words.
    function onTrouble(text) {
        cameraModel.look()
        if (!isPresent)
            return
        recorder.stop()
        if (!isStreaming)
            settings.clear() // nothing comes in the size that was chosen
        problem.show(sentence(cameraName + ": " + text), "Try again")
    }

    CameraModel {
        id: cameraModel
        onPlugged: {
            if (view.cameraId === "" || id === view.cameraId)
                view.open(id)
        }
        onUnplugged: {
            if (id !== view.cameraId)
                return
            videoRecorder.stop()
            loader.active = false
            problem.show("“" + name + "” was unplugged.",
                         count > 0 ? "Use “" + nameOf(idAt(0)) + "”" : "")
        }
    }

    ViewfinderChoice {
        id: settings
        onFailed: problem.show(view.sentence(view.cameraName + ": " + error))
    }

    CameraPreview {
        id: previewSource
        camera: loader.item
    }

    RawPictures {
        id: rawPictures
        camera: loader.item
    }

    Snapshot {
        id: photo
        source: rawPictures
        onSaved: notice.show("Saved " + file)
        onFailed: problem.show(error)
    }

    Recorder {
        id: videoRecorder
        source: rawPictures
        onFinished: notice.show("Saved " + file, "Play", file)
        onFailed: problem.show(error)
    }

    FrameMeter {
        id: frameMeter
    }

    Statistics {
        id: figures
        meter: frameMeter
        surface: previewSource.outputSurface
    }

    // A new Camera for each: QML's own keeps the name of a camera that is no longer there.
    Loader {
        id: loader
        active: false
        sourceComponent: Camera {
            id: source

            deviceId: view.cameraId
            cameraState: Camera.LoadedState
            captureMode: Camera.CaptureViewfinder
            onCameraStatusChanged: {
                if (cameraStatus === Camera.LoadedStatus && cameraState === Camera.LoadedState)
                    Qt.callLater(begin)
            }
            onError: {
                if (errorCode !== Camera.NoError) // which is told too
                    Qt.callLater(view.onTrouble, errorString)
            }
            Component.onCompleted: {
                if (cameraStatus === Camera.LoadedStatus)
                    Qt.callLater(begin)
            }
            Component.onDestruction: {
                settings.clear()
                Qt.callLater(view.start)
            }

            function begin() {
                if (cameraState !== Camera.LoadedState)
                    return
                view.passWish()
                settings.load(source)
                cameraState = Camera.ActiveState
            }
        }
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
                anchors.leftMargin: 16
                anchors.rightMargin: 4
                spacing: 4

                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 0

                    Label {
                        Layout.fillWidth: true
                        text: view.cameraName !== "" ? view.cameraName : "No camera"
                        font.bold: true
                        elide: Text.ElideRight
                    }
                    Label {
                        Layout.fillWidth: true
                        visible: settings.sizeIndex >= 0
                        text: settings.sizeIndex < 0 ? "" : settings.sizes[settings.sizeIndex]
                                                         + ", " + settings.rates[settings.rateIndex]
                        font.pixelSize: 12
                        opacity: 0.7
                        elide: Text.ElideRight
                    }
                }
                IconButton {
                    objectName: "statisticsButton"
                    name: "Statistics"
                    key: "I"
                    icon.source: "icons/statistics.svg"
                    checked: statisticsPanel.visible
                    onClicked: view.toggleStatistics()
                }
                IconButton {
                    objectName: "settingsButton"
                    name: "Settings"
                    key: "S"
                    icon.source: "icons/settings.svg"
                    onClicked: view.settingsAsked()
                }
            }
        }

        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            Picture {
                objectName: "preview"
                anchors.fill: parent
                source: previewSource
                mirrored: previewSource.mirrored
                orientation: loader.item ? loader.item.orientation : 0 // as it is mounted
                filters: [frameMeter]
                visible: loader.active
            }

            Label {
                objectName: "placeholder"
                anchors.centerIn: parent
                width: Math.min(parent.width - 48, 480)
                visible: !loader.active
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                opacity: 0.7
                font.pixelSize: 18
                text: {
                    if (view.cameraId !== "")
                        return "It shows again when it is plugged in."
                    const trouble = cameraModel.trouble()
                    return trouble !== "" ? "No camera can be used: " + trouble + "."
                                          : "No camera is connected. One that is plugged in shows here."
                }
            }

            BusyIndicator {
                anchors.centerIn: parent
                running: loader.active && !view.isStreaming && !problem.visible
            }

            ColumnLayout {
                anchors.fill: parent
                anchors.margins: 12
                spacing: 8

                Message {
                    id: problem
                    objectName: "problem"
                    Layout.fillWidth: true
                    Layout.maximumWidth: 640
                    Layout.alignment: Qt.AlignHCenter
                    isError: true
                    onActed: view.isPresent ? view.open(view.cameraId)
                                            : view.open(cameraModel.idAt(0))
                }

                RecordingBadge {
                    objectName: "recordingBadge"
                    Layout.alignment: Qt.AlignHCenter
                    recorder: videoRecorder
                    visible: videoRecorder.active
                }

                StatisticsPanel {
                    id: statisticsPanel
                    objectName: "statistics"
                    Layout.alignment: Qt.AlignLeft
                    figures: view.statistics
                    codecName: "encoder"
                    codecQueue: videoRecorder.active ? videoRecorder.waiting : -1
                    visible: false
                }

                Item {
                    Layout.fillHeight: true
                }

                Message {
                    id: notice
                    objectName: "notice"
                    Layout.fillWidth: true
                    Layout.maximumWidth: 640
                    Layout.alignment: Qt.AlignHCenter
                    canAct: !videoRecorder.active
                    onActed: view.playAsked(subject)
                }
            }
        }

        ControlBar {
            Layout.fillWidth: true
            view: view
        }
    }
}
