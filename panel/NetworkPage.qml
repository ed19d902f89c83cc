// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import Corvane.Panel
import QtQuick.Controls.Basic
import QtQuick.Layouts

Form {
    id: page
    required property var network
    readonly property bool used: Wifi.current.ssid === network.ssid
    readonly property bool joinable: network.saved || network.kind !== "other"
    readonly property var facts: [
        [qsTr("Name"), network.name !== network.ssid ? network.ssid : ""],
        [qsTr("Security"), {open: qsTr("open"),
                            password: qsTr("WPA, with a password")}[network.kind]
                           || network.security],
        [qsTr("Signal"), network.bssid ? qsTr("%1 dBm").arg(network.signal) : qsTr("out of range")],
        [qsTr("Channel"), network.bssid ? qsTr("%1 (%2 GHz)").arg(network.channel).arg(network.band)
                                        : ""],
        [qsTr("Access point"), network.bssid],
        [qsTr("Address"), used ? Wifi.current.address : ""]
    ].filter(fact => fact[1])

    function forget() {
        StackView.view.back()
        Wifi.forget(network)
    }

    heading: network.name
    Repeater {
        model: page.facts
        RowLayout {
            required property var modelData
            spacing: 12
            Label { text: parent.modelData[0]; Layout.preferredWidth: 110; opacity: 0.7 }
            PanelLabel { text: parent.modelData[1] }
        }
    }
    PanelLabel {
        visible: !page.joinable
        text: qsTr("This kind of network has to be set up in a file; see the set-up guide.")
    }
    PanelButton {
        visible: page.used || page.joinable
        focus: visible
        text: page.used ? qsTr("Disconnect") : qsTr("Connect")
        onClicked: {
            const view = page.StackView.view // there is none any more after this
            view.back()
            if (page.used)
                Wifi.leave()
            else
                view.join(page.network)
        }
    }
    PanelButton {
        visible: page.network.saved
        text: qsTr("Forget")
        onClicked: page.StackView.view.ask(
                       qsTr("Forget %1? Its password is deleted.").arg(page.network.isolated),
                       [qsTr("Keep"), qsTr("Forget")], choice => choice === 0 || page.forget())
    }
    PanelButton {
        text: qsTr("Back")
        focus: !page.used && !page.joinable
        onClicked: page.StackView.view.back()
    }
}
