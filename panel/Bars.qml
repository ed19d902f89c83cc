// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick

Row {
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
