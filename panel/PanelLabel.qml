// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// A text that may come from outside, such as a network's name.
Label {
    Layout.fillWidth: true
    horizontalAlignment: Text.AlignLeft
    textFormat: Text.PlainText
    wrapMode: elide === Text.ElideNone ? Text.Wrap : Text.NoWrap
}
