// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import Corvane.Panel
import QtQuick.Controls.Basic

ApplicationWindow {
    id: window
    required property Wifi wifi
    property string onScreenKeyboard // the file that shows it inside the window, or empty

    width: 480
    height: 720
    minimumWidth: 320
    minimumHeight: 320
    title: qsTr("Wi-Fi")
    font.pixelSize: 17
    LayoutMirroring.enabled: Application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true
    palette { // this style would be light always
        window: system.base; windowText: system.windowText
        base: system.base; text: system.text; placeholderText: system.mid
        button: system.button; buttonText: system.buttonText
        light: system.light; midlight: system.midlight; mid: system.mid; dark: system.dark
        highlight: system.highlight; highlightedText: system.highlightedText
    }
    onClosing: wifi.end()

    SystemPalette { id: system }

    StackView {
        id: pages
        function join(network: var) {
            if (network.saved)
                window.wifi.reconnect(network)
            else if (network.kind === "open")
                window.wifi.join(network, "")
            else
                show(network.kind === "password" ? "JoinPage.qml" : "NetworkPage.qml",
                     {network: network})
        }
        function show(page: string, properties: var) {
            window.wifi.notice = ""
            push(Qt.resolvedUrl(page), Object.assign({wifi: window.wifi}, properties),
                 StackView.Immediate)
            currentItem.forceActiveFocus(Qt.TabFocusReason)
        }
        function back() {
            if (depth > 1 && !window.wifi.activity)
                pop(StackView.Immediate)
            window.wifi.notice = ""
            currentItem.forceActiveFocus(Qt.TabFocusReason)
        }
        anchors { top: parent.top; bottom: parent.bottom; bottomMargin: keyboard.shown }
        x: (parent.width - width) / 2
        width: Math.min(parent.width, 720)
        focus: true
        initialItem: ListPage { wifi: window.wifi }
        Keys.onEscapePressed: back()
        Keys.onBackPressed: back()
    }
    Loader {
        id: keyboard
        readonly property int shown: item && item.active ? item.height : 0
        source: window.onScreenKeyboard
        anchors { left: parent.left; right: parent.right }
        y: parent.height - shown
    }

    Component { // made when there is a question: the window comes sooner
        id: questionAboutSaved
        Question {
            required property var network
            choices: [qsTr("New password"), qsTr("Try again")]
            onChosen: choice => choice === 0
                      ? pages.show("JoinPage.qml", {network: network})
                      : window.wifi.reconnect(network)
            onClosed: destroy()
        }
    }
    Connections {
        target: window.wifi
        function onFailedSaved(why: string, network: var) {
            questionAboutSaved.createObject(window.contentItem, {network: network, text: why}).open()
        }
        function onJoined() {
            while (pages.depth > 1)
                pages.pop(StackView.Immediate)
            pages.currentItem.forceActiveFocus(Qt.TabFocusReason)
        }
    }
}
