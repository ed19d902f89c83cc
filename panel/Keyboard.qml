// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors
import QtQuick.VirtualKeyboard

InputPanel {}
