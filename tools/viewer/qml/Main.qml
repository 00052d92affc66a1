// SPDX-License-Identifier: BSD-3-Clause
import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Window 2.15

ApplicationWindow {
    id: window

    // Of the command line
    property string wishedCamera
    property size wishedSize
    property real wishedRate: 0

    readonly property bool isNarrow: width < 640
    readonly property bool isPlayback: playback.visible
    property bool isQuitting: false

    function toggle(panel, other) {
        other.close() // which is in the same place
        if (panel.opened)
            panel.close()
        else
            panel.open()
    }
    function play(file) {
        if (camera.recorder.active)
            return
        recordings.close()
        settings.close()
        playback.open(file)
    }

    width: Math.min(960, Screen.desktopAvailableWidth)
    height: Math.min(640, Screen.desktopAvailableHeight)
    minimumWidth: 320
    minimumHeight: 400
    visible: true
    title: isPlayback ? playback.name : camera.cameraName !== "" ? camera.cameraName : "Camera"
    color: "#121212"

    // A recording is completed first, unless an encoder takes longer for it than the user waits.
    onClosing: {
        if (camera.recorder.active && !isQuitting) {
            close.accepted = false
            isQuitting = true
            camera.recorder.stop()
        }
    }

    CameraView {
        id: camera
        objectName: "cameraView"
        anchors.fill: parent
        anchors.rightMargin: window.isNarrow ? 0 : Math.max(settings.shownWidth, recordings.shownWidth)
        visible: !playback.visible
        isNarrow: window.isNarrow
        onSettingsAsked: window.toggle(settings, recordings)
        onRecordingsAsked: window.toggle(recordings, settings)
        onPlayAsked: window.play(file)
        Component.onCompleted: begin(window.wishedCamera, window.wishedSize, window.wishedRate)
    }

    PlaybackView {
        id: playback
        objectName: "playbackView"
        anchors.fill: parent
        visible: false
        onClosed: camera.forceActiveFocus()
    }

    SettingsPanel {
        id: settings
        objectName: "settings"
        isNarrow: window.isNarrow
        view: camera
    }

    RecordingsPanel {
        id: recordings
        objectName: "recordings"
        isNarrow: window.isNarrow
        onChosen: window.play(file)
    }

    KeysDialog {
        id: keys
        objectName: "keys"
        anchors.centerIn: parent
    }

    Connections {
        target: camera.recorder
        function onActiveChanged() {
            if (camera.recorder.active)
                recordings.close() // of which none can be played now
            if (!camera.recorder.active && window.isQuitting)
                Qt.callLater(Qt.quit)
        }
        function onFinished() {
            recordings.refresh()
        }
    }

    Shortcut {
        sequence: "P"
        autoRepeat: false
        enabled: !window.isPlayback
        onActivated: camera.snapshot.take()
    }
    Shortcut {
        sequence: "R"
        autoRepeat: false
        enabled: !window.isPlayback
        onActivated: camera.toggleRecording()
    }
    Shortcut {
        sequence: "C"
        autoRepeat: false
        enabled: !window.isPlayback
        onActivated: camera.openNext()
    }
    Shortcut {
        sequence: "S"
        autoRepeat: false
        enabled: !window.isPlayback
        onActivated: window.toggle(settings, recordings)
    }
    Shortcut {
        sequence: "V"
        autoRepeat: false
        enabled: !window.isPlayback && !camera.recorder.active
        onActivated: window.toggle(recordings, settings)
    }
    Shortcut {
        sequence: "I"
        autoRepeat: false
        onActivated: window.isPlayback ? playback.toggleStatistics() : camera.toggleStatistics()
    }
    Shortcut {
        sequence: "L"
        autoRepeat: false
        enabled: !camera.recorder.active
        onActivated: {
            recordings.refresh()
            if (recordings.newest !== "")
                window.play(recordings.newest)
        }
    }
    Shortcut {
        sequences: ["F11", "F"]
        autoRepeat: false
        onActivated: window.visibility = window.visibility === Window.FullScreen ? Window.Windowed
                                                                                 : Window.FullScreen
    }
    Shortcut {
        sequence: "F1"
        autoRepeat: false
        onActivated: keys.open()
    }
    Shortcut {
        sequence: "Esc"
        autoRepeat: false
        enabled: window.isPlayback || settings.opened || recordings.opened
        onActivated: {
            if (window.isPlayback) {
                playback.close()
            } else {
                settings.close()
                recordings.close()
            }
        }
    }
    Shortcut {
        sequence: "Ctrl+Q"
        context: Qt.ApplicationShortcut // also while something modal is open
        autoRepeat: false
        onActivated: window.close()
    }
}
