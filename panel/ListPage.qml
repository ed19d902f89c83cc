// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import Corvane.Panel
import QtQuick.Controls.Basic
import QtQuick.Layouts

Page {
    id: page
    readonly property bool idle: !Wifi.activity
    readonly property var signalWords: [qsTr("out of range"), qsTr("weak signal"),
        qsTr("fair signal"), qsTr("good signal"), qsTr("very good signal")]

    function open(network: var) {
        if (!idle || StackView.view.depth > 1)
            return
        if (network.saved && !network.bssid)
            Wifi.notice = qsTr("%1 is out of range.").arg(network.isolated)
        else
            StackView.view.join(network)
    }
    function details(network: var) {
        if (idle && StackView.view.depth === 1)
            StackView.view.show("NetworkPage.qml", network)
    }

    component Bars: Row {
        id: signal
        required property int bars
        required property color color
        height: 24
        spacing: 2
        Repeater {
            model: 4
            Rectangle {
                required property int index
                anchors.bottom: parent.bottom
                width: 5
                height: 6 * (index + 1)
                radius: 1
                color: signal.color
                opacity: index < signal.bars ? 1 : 0.2
            }
        }
    }
    component Padlock: Rectangle {
        id: padlock
        Layout.topMargin: 9 // for the shackle
        implicitWidth: 16
        implicitHeight: 11
        radius: 2
        Rectangle {
            z: -1
            x: 3
            y: -9
            width: 10
            height: 16
            radius: 5
            color: "transparent"
            border { width: 2; color: padlock.color }
        }
    }

    header: ColumnLayout {
        spacing: 0
        ItemDelegate {
            id: card
            readonly property var network: Wifi.current
            Layout.fillWidth: true
            Layout.minimumHeight: 72
            enabled: page.idle && network.name !== undefined
            focusPolicy: Qt.StrongFocus
            highlighted: visualFocus
            onClicked: page.details(network)
            Keys.onReturnPressed: clicked()
            Keys.onEnterPressed: clicked()
            Accessible.name: title.text + ", " + situation.text
            contentItem: RowLayout {
                spacing: 16
                Bars { bars: card.network.bars || 0; color: title.color }
                ColumnLayout {
                    PanelLabel {
                        id: title
                        text: card.network.name || qsTr("Wi-Fi")
                        elide: Text.ElideRight
                        font { bold: true; pixelSize: 20 }
                    }
                    PanelLabel {
                        id: situation
                        text: Wifi.activity || Wifi.situation
                    }
                }
            }
        }
        Progress {}
        PanelLabel {
            Layout.margins: 12
            visible: text
            text: Wifi.notice
            Accessible.role: Accessible.AlertMessage
        }
    }

    ListView {
        id: list
        objectName: "list"
        anchors.fill: parent
        focus: true
        activeFocusOnTab: true
        clip: true
        opacity: Wifi.problem ? 0.5 : 1
        model: Wifi.networks
        section.property: "section"
        Component.onDestruction: section.property = "" // or Qt 6.4 makes headings to the end, and crashes
        section.delegate: Label {
            required property string section
            width: ListView.view.width
            padding: 12
            text: section === "true" ? qsTr("Saved") : qsTr("In range")
            font { bold: true; pixelSize: 14 }
        }
        onDragEnded: if (verticalOvershoot < -64) Wifi.scan()
        ScrollIndicator.vertical: ScrollIndicator {}
        delegate: ItemDelegate {
            id: row
            required property var network
            readonly property string words: !network.bssid ? qsTr("out of range")
                : network.kind === "password" ? "" : network.security
            width: ListView.view.width
            height: 56
            highlighted: ListView.isCurrentItem && list.activeFocus
            enabled: page.idle
            onClicked: page.open(network)
            onPressAndHold: page.details(network)
            Keys.onReturnPressed: clicked()
            Keys.onEnterPressed: clicked()
            Keys.onMenuPressed: page.details(network)
            Keys.onPressed: event => {
                if (event.key === (mirrored ? Qt.Key_Left : Qt.Key_Right))
                    page.details(network)
            }
            Accessible.name: [network.name, network.saved ? qsTr("saved") : "",
                              page.signalWords[network.bars], network.security]
                             .filter(words => words).join(", ")
            contentItem: RowLayout {
                spacing: 16
                Bars { bars: row.network.bars; color: name.color }
                PanelLabel {
                    id: name
                    text: row.network.name
                    elide: Text.ElideRight
                    clip: true
                    opacity: row.network.bssid ? 1 : 0.6
                }
                Label {
                    text: row.words
                    visible: text
                    font.pixelSize: 14
                }
                Padlock { visible: row.network.kind === "password"; color: name.color }
                Button {
                    Layout.preferredWidth: 48
                    Layout.preferredHeight: 48
                    flat: true
                    text: row.mirrored ? "\u2039" : "\u203a"
                    font.pixelSize: 24
                    onClicked: page.details(row.network)
                    Accessible.name: qsTr("Details of %1").arg(row.network.isolated)
                }
            }
        }
    }

    footer: RowLayout {
        spacing: 8
        PanelButton {
            Layout.leftMargin: 8
            Layout.preferredWidth: 1
            text: qsTr("Scan")
            enabled: page.idle
            onClicked: Wifi.scan()
        }
        PanelButton {
            Layout.rightMargin: 8
            Layout.preferredWidth: 1
            text: qsTr("Hidden network")
            enabled: page.idle
            onClicked: page.StackView.view.show("JoinPage.qml")
        }
    }
}
