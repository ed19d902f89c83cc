// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import Corvane.Panel
import QtQuick.Controls.Basic
import QtQuick.Layouts

// Asks for the password of a network or, without one, for the name of a hidden network, too.
Page {
    id: page
    required property Wifi wifi
    property var network
    readonly property bool idle: !wifi.activity
    readonly property bool ready: {
        const password_size = wifi.size(password.text), name_size = wifi.size(name.text)
        return idle && (password_size >= 8 && password_size <= 63
                        || !network && password_size === 0)
            && (network || name_size >= 1 && name_size <= 32)
    }

    function join() {
        if (ready)
            wifi.join(network || {name: name.text}, password.text)
    }

    component Field: TextField {
        Layout.fillWidth: true
        Layout.minimumHeight: 52
        selectByMouse: true
        Accessible.name: placeholderText
    }
    onIdleChanged: if (idle) password.forceActiveFocus()
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
                text: page.network ? page.network.name : qsTr("Hidden network")
                horizontalAlignment: Text.AlignLeft
                textFormat: Text.PlainText
                wrapMode: Text.Wrap
                font { bold: true; pixelSize: 20 }
            }
            Field {
                id: name
                visible: !page.network
                focus: !page.network
                enabled: page.idle
                placeholderText: qsTr("Name")
                inputMethodHints: Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
                onAccepted: password.forceActiveFocus()
            }
            RowLayout {
                Field {
                    id: password
                    objectName: "password"
                    focus: page.network !== undefined
                    enabled: page.idle
                    echoMode: eye.checked ? TextInput.Normal : TextInput.Password
                    passwordMaskDelay: 0
                    placeholderText: qsTr("Password")
                    inputMethodHints: Qt.ImhHiddenText | Qt.ImhSensitiveData
                                      | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
                    onAccepted: page.join()
                }
                PanelButton {
                    id: eye
                    Layout.fillWidth: false
                    text: checked ? qsTr("Hide") : qsTr("Show")
                    checkable: true
                    focusPolicy: Qt.TabFocus
                }
            }
            Label {
                Layout.fillWidth: true
                opacity: page.ready || !page.idle ? 0 : 1
                text: page.network ? qsTr("8 to 63 characters")
                                   : qsTr("8 to 63 characters, or none for an open network")
                wrapMode: Text.Wrap
                font.pixelSize: 14
            }
            Label {
                Layout.fillWidth: true
                visible: text || page.wifi.activity
                text: page.wifi.notice
                textFormat: Text.PlainText
                wrapMode: Text.Wrap
                Accessible.role: Accessible.AlertMessage
            }
            Label {
                Layout.fillWidth: true
                visible: text
                text: page.wifi.activity
                textFormat: Text.PlainText
                elide: Text.ElideRight
            }
            Progress {
                Layout.fillWidth: true
                wifi: page.wifi
            }
            RowLayout {
                spacing: 8
                PanelButton {
                    text: qsTr("Cancel")
                    enabled: page.idle
                    onClicked: page.StackView.view.back()
                }
                PanelButton {
                    text: qsTr("Connect")
                    enabled: page.ready
                    onClicked: page.join()
                }
            }
        }
    }
}
