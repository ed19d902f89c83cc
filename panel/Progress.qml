// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import Corvane.Panel
import QtQuick.Controls.Basic

// Fills in the time that an attempt to connect takes at most; moves to and fro for anything else.
ProgressBar {
    id: progress
    required property Wifi wifi

    implicitHeight: 6
    opacity: wifi.activity ? 1 : 0 // keeps its place
    indeterminate: wifi.activity && !wifi.connecting
    NumberAnimation on value {
        running: progress.wifi.connecting
        from: 0
        to: 1
        duration: 15000
    }
}
