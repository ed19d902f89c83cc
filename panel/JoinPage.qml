// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import Corvane.Panel
import QtQuick.Controls.Basic
import QtQuick.Layouts

// Asks for the password of a network or, without one, for the name of a hidden network, too.
Form {
    id: page
    property var network
    readonly property bool idle: !Wifi.activity
    readonly property bool ready: {
        const password_size = Wifi.size(password.text), name_size = Wifi.size(name.text)
        return idle && (password_size >= 8 && password_size <= 63
                        || !network && password_size === 0)
            && (network || name_size >= 1 && name_size <= 32)
    }

    function join() {
        if (ready)
            Wifi.join(network || {name: name.text}, password.text)
    }

    component Field: TextField {
        Layout.fillWidth: true
        Layout.minimumHeight: 52
        enabled: !Wifi.activity
        selectByMouse: true
        Accessible.name: placeholderText
    }
    onIdleChanged: if (idle) password.forceActiveFocus()
    heading: network ? network.name : qsTr("Hidden network")
    Field {
        id: name
        visible: !page.network
        focus: !page.network
        placeholderText: qsTr("Name")
        inputMethodHints: Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
        onAccepted: password.forceActiveFocus()
    }
    RowLayout {
        Field {
            id: password
            objectName: "password"
            focus: page.network !== undefined
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
    PanelLabel {
        opacity: page.ready || !page.idle ? 0 : 1
        text: page.network ? qsTr("8 to 63 characters")
                           : qsTr("8 to 63 characters, or none for an open network")
        font.pixelSize: 14
    }
    PanelLabel {
        visible: text || Wifi.activity
        text: Wifi.notice
        Accessible.role: Accessible.AlertMessage
    }
    PanelLabel {
        visible: text
        text: Wifi.activity
        elide: Text.ElideRight
    }
    Progress {}
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
