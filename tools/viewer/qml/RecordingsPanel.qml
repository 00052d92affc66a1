// SPDX-License-Identifier: BSD-3-Clause
import Ocelle.Viewer 1.0
import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

SidePanel {
    id: panel

    readonly property string newest: list.files.length > 0 ? list.files[0].path : ""

    signal chosen(string file)

    function refresh() {
        list.refresh()
    }

    onAboutToShow: list.refresh()

    RecordingList {
        id: list
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.leftMargin: 16
        anchors.rightMargin: 16
        anchors.topMargin: 8
        spacing: 6

        PanelTitle {
            text: "Recordings"
            onClosed: panel.close()
        }
        Label {
            Layout.fillWidth: true
            visible: list.files.length === 0
            text: "Nothing was recorded yet."
            wrapMode: Text.Wrap
            opacity: 0.7
        }
        ListView {
            id: files
            objectName: "recordingsList"
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            focus: true
            activeFocusOnTab: true
            keyNavigationEnabled: true
            model: list.files

            function chooseCurrent() {
                if (currentIndex >= 0)
                    panel.chosen(list.files[currentIndex].path)
            }

            Keys.onReturnPressed: chooseCurrent()
            Keys.onEnterPressed: chooseCurrent() // of the keypad
            ScrollBar.vertical: ScrollBar {}

            delegate: ItemDelegate {
                width: ListView.view.width
                icon.source: "icons/play.svg"
                text: modelData.name + "\n" + modelData.size
                highlighted: files.activeFocus && ListView.isCurrentItem
                onClicked: panel.chosen(modelData.path)
            }
        }
    }
}
