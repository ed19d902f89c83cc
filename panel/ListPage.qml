// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import Corvane.Panel
import QtQuick.Controls.Basic
import QtQuick.Layouts

Page {
    id: page
    required property Wifi wifi
    readonly property bool idle: !wifi.activity

    function open(network: var) {
        if (!idle || StackView.view.depth > 1)
            return
        if (network.saved && !network.bssid)
            wifi.notice = qsTr("%1 is out of range.").arg(network.name)
        else
            StackView.view.join(network)
    }
    function details(network: var) {
        if (idle && StackView.view.depth === 1)
            StackView.view.show("NetworkPage.qml", {network: network})
    }
    function signalWords(bars: int): string {
        return [qsTr("out of range"), qsTr("weak signal"), qsTr("fair signal"),
                qsTr("good signal"), qsTr("very good signal")][bars]
    }
    function securityWords(network: var): string {
        return {open: qsTr("open"), password: qsTr("with password"), enterprise: qsTr("enterprise"),
                WEP: "WEP", other: qsTr("other security")}[network.kind] || ""
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
    component Padlock: Item {
        id: padlock
        required property color color
        implicitWidth: 16
        implicitHeight: 20
        Rectangle {
            x: 3
            width: 10
            height: 16
            radius: 5
            color: "transparent"
            border { width: 2; color: padlock.color }
        }
        Rectangle {
            y: 9
            width: 16
            height: 11
            radius: 2
            color: padlock.color
        }
    }

    header: ColumnLayout {
        spacing: 0
        ItemDelegate {
            id: card
            readonly property var network: page.wifi.current
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
                    Label {
                        id: title
                        Layout.fillWidth: true
                        text: card.network.name || qsTr("Wi-Fi")
                        horizontalAlignment: Text.AlignLeft
                        textFormat: Text.PlainText
                        elide: Text.ElideRight
                        font { bold: true; pixelSize: 20 }
                    }
                    Label {
                        id: situation
                        Layout.fillWidth: true
                        text: page.wifi.activity || page.wifi.situation
                        horizontalAlignment: Text.AlignLeft
                        textFormat: Text.PlainText
                        wrapMode: Text.Wrap
                    }
                }
            }
        }
        Progress {
            Layout.fillWidth: true
            wifi: page.wifi
        }
        Label {
            Layout.fillWidth: true
            Layout.margins: 12
            visible: text
            text: page.wifi.notice
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
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
        opacity: page.wifi.reachable ? 1 : 0.5
        model: page.wifi.networks
        section.property: "section"
        Component.onDestruction: section.property = "" // or Qt 6.4 makes headings to the end, and crashes
        section.delegate: Label {
            required property string section
            width: ListView.view.width
            padding: 12
            text: section === "true" ? qsTr("Saved") : qsTr("In range")
            font { bold: true; pixelSize: 14 }
        }
        onDragEnded: if (verticalOvershoot < -64) page.wifi.scan()
        ScrollIndicator.vertical: ScrollIndicator {}
        delegate: ItemDelegate {
            id: row
            required property var network
            readonly property string words: !network.bssid ? qsTr("out of range")
                : network.kind === "password" ? "" : page.securityWords(network)
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
                              page.signalWords(network.bars), page.securityWords(network)]
                             .filter(words => words).join(", ")
            contentItem: RowLayout {
                spacing: 16
                Bars { bars: row.network.bars; color: name.color }
                Label {
                    id: name
                    Layout.fillWidth: true
                    text: row.network.name
                    horizontalAlignment: Text.AlignLeft
                    textFormat: Text.PlainText
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
                AbstractButton {
                    Layout.preferredWidth: 48
                    Layout.preferredHeight: 48
                    contentItem: Label {
                        text: row.mirrored ? "\u2039" : "\u203a"
                        font.pixelSize: 24
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: Text.AlignVCenter
                    }
                    onClicked: page.details(row.network)
                    Accessible.name: qsTr("Details of %1").arg(row.network.name)
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
            onClicked: page.wifi.scan()
        }
        PanelButton {
            Layout.rightMargin: 8
            Layout.preferredWidth: 1
            text: qsTr("Hidden network")
            enabled: page.idle
            onClicked: page.StackView.view.show("JoinPage.qml", {})
        }
    }
}
