// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#pragma once

#include "wifi.hpp"

#include <QQmlApplicationEngine>
#include <QQuickWindow>

/// Loads the window, hidden, with Qt's on-screen keyboard in it if that is the input method. Null
/// if a QML module is missing.
QQuickWindow* load_window(QQmlApplicationEngine& engine);

/// What the loaded window shows. Goes with `engine`.
Wifi& wifi_of(QQmlApplicationEngine& engine);
