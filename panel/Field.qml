// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

TextField {
    Layout.fillWidth: true
    Layout.minimumHeight: 52
    selectByMouse: true
    Accessible.name: placeholderText
}
