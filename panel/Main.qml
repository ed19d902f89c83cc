// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import Corvane.Panel
import QtQuick.Controls.Basic

ApplicationWindow {
    id: window
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
    onClosing: Wifi.end()

    SystemPalette { id: system }

    StackView {
        id: pages
        function join(network: var) {
            if (network.saved)
                Wifi.reconnect(network)
            else if (network.kind === "open")
                Wifi.join(network, "")
            else
                show(network.kind === "password" ? "JoinPage.qml" : "NetworkPage.qml", network)
        }
        function show(page: string, network: var) {
            Wifi.notice = ""
            push(Qt.resolvedUrl(page), {network: network}, StackView.Immediate)
            currentItem.forceActiveFocus(Qt.TabFocusReason)
        }
        function back() {
            if (depth > 1 && !Wifi.activity)
                pop(StackView.Immediate)
            Wifi.notice = ""
            currentItem.forceActiveFocus(Qt.TabFocusReason)
        }
        function ask(text: string, choices: var, chosen: var) {
            question.createObject(window.contentItem, {text: text, choices: choices,
                                                       chosen: chosen}).open()
        }
        anchors { top: parent.top; bottom: parent.bottom; bottomMargin: keyboard.shown }
        x: (parent.width - width) / 2
        width: Math.min(parent.width, 720)
        focus: true
        initialItem: ListPage {}
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
        id: question
        Question {}
    }
    Connections {
        target: Wifi
        function onFailedSaved(why: string, network: var) {
            pages.ask(why, [qsTr("New password"), qsTr("Try again")],
                      choice => choice === 0 ? pages.show("JoinPage.qml", network)
                                             : Wifi.reconnect(network))
        }
        function onJoined() {
            while (pages.depth > 1)
                pages.pop(StackView.Immediate)
            pages.currentItem.forceActiveFocus(Qt.TabFocusReason)
        }
    }
}
