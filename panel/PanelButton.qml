// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

Button {
    Layout.fillWidth: true
    Accessible.name: text
    Layout.minimumHeight: 52
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    opacity: enabled ? 1 : 0.4
}
