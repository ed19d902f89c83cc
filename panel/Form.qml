// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// A page that scrolls: a heading and what is put below it.
Page {
    id: form
    required property string heading
    default property alias content: column.data

    Flickable {
        anchors.fill: parent
        contentHeight: column.height + 32
        ColumnLayout {
            id: column
            x: 16
            y: 16
            width: parent.width - 32
            spacing: 12
            PanelLabel {
                text: form.heading
                font { bold: true; pixelSize: 20 }
            }
        }
    }
}
