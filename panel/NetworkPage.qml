// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import Corvane.Panel
import QtQuick.Controls.Basic
import QtQuick.Layouts

Page {
    id: page
    required property Wifi wifi
    required property var network
    readonly property bool used: wifi.current.ssid === network.ssid
    readonly property bool joinable: network.saved || network.kind === "open"
                                     || network.kind === "password"
    readonly property var facts: [
        [qsTr("Name"), network.name !== network.ssid ? network.ssid : ""],
        [qsTr("Security"), {open: qsTr("open"), password: qsTr("WPA, with a password"),
                            enterprise: qsTr("enterprise"), WEP: "WEP",
                            other: qsTr("other security")}[network.kind] || ""],
        [qsTr("Signal"), network.bssid ? qsTr("%1 dBm").arg(network.signal) : qsTr("out of range")],
        [qsTr("Channel"), network.bssid ? qsTr("%1 (%2 GHz)").arg(network.channel).arg(network.band)
                                        : ""],
        [qsTr("Access point"), network.bssid],
        [qsTr("Address"), used ? wifi.address : ""]
    ].filter(fact => fact[1])

    Flickable {
        anchors.fill: parent
        contentHeight: column.height + 32
        ColumnLayout {
            id: column
            x: 16
            y: 16
            width: parent.width - 32
            spacing: 12
            Label {
                Layout.fillWidth: true
                text: page.network.name
                horizontalAlignment: Text.AlignLeft
                textFormat: Text.PlainText
                wrapMode: Text.Wrap
                font { bold: true; pixelSize: 20 }
            }
            Repeater {
                model: page.facts
                RowLayout {
                    required property var modelData
                    spacing: 12
                    Label { text: parent.modelData[0]; Layout.preferredWidth: 110; opacity: 0.7 }
                    Label {
                        Layout.fillWidth: true
                        text: parent.modelData[1]
                        horizontalAlignment: Text.AlignLeft
                        textFormat: Text.PlainText
                        wrapMode: Text.Wrap
                    }
                }
            }
            Label {
                Layout.fillWidth: true
                visible: !page.joinable && page.network.bssid
                text: qsTr("This kind of network has to be set up in a file; see the set-up guide.")
                wrapMode: Text.Wrap
            }
            PanelButton {
                visible: page.used || page.joinable
                focus: visible
                text: page.used ? qsTr("Disconnect") : qsTr("Connect")
                onClicked: {
                    const view = page.StackView.view // there is none any more after this
                    view.back()
                    if (page.used)
                        page.wifi.leave()
                    else
                        view.join(page.network)
                }
            }
            PanelButton {
                visible: page.network.saved
                text: qsTr("Forget")
                onClicked: question.open()
            }
            PanelButton {
                text: qsTr("Back")
                focus: !page.used && !page.joinable
                onClicked: page.StackView.view.back()
            }
        }
    }
    Question {
        id: question
        text: qsTr("Forget %1? Its password is deleted.").arg(page.network.name)
        choices: [qsTr("Keep"), qsTr("Forget")]
        onChosen: choice => {
            if (choice === 0)
                return
            page.StackView.view.back()
            page.wifi.forget(page.network)
        }
    }
}
