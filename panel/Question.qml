// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The first choice is the safe one: it has the focus.
Dialog {
    id: question
    required property string text
    required property var choices
    required property var chosen // a function of the index of the choice

    anchors.centerIn: parent
    width: Math.min(parent.width - 32, 420)
    modal: true
    focus: true
    onOpened: buttons.itemAt(0).forceActiveFocus(Qt.TabFocusReason)
    onClosed: destroy()

    ColumnLayout {
        anchors { left: parent.left; right: parent.right }
        spacing: 16
        PanelLabel { text: question.text }
        Repeater {
            id: buttons
            model: question.choices
            PanelButton {
                required property int index
                required property string modelData
                text: modelData
                onClicked: {
                    question.close()
                    question.chosen(index)
                }
            }
        }
    }
}
