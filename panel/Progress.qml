// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import Corvane.Panel
import QtQuick.Controls.Basic
import QtQuick.Layouts

// Fills in the time that an attempt to connect takes at most; moves to and fro for anything else.
ProgressBar {
    Layout.fillWidth: true
    implicitHeight: 6
    opacity: Wifi.activity ? 1 : 0 // keeps its place
    indeterminate: Wifi.activity && !Wifi.connecting
    NumberAnimation on value {
        running: Wifi.connecting
        from: 0
        to: 1
        duration: 15000
    }
}
