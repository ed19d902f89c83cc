// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// What the window asks of wpa_supplicant beyond the library's own operations. It joins networks of
/// any name, with WPA3 only, and hidden ones. SELECT_NETWORK disables all other profiles; each of
/// these ends with ENABLE_NETWORK all, so that the device roams and returns to other networks.
///
/// Like the library's, they block for seconds and throw std::runtime_error.

#pragma once

#include <cvn/wifi.hpp>

/// Adds a profile, connects, and saves it once (SAVE_CONFIG) in the place of one of this name. If
/// any of it fails, removes it. `ssid` is the bytes of the name, `password` is empty for an open
/// network, and a hidden one has to be asked for by name (scan_ssid).
void join(const cvn::wifi::Client& client, const QByteArray& ssid, const QString& password,
          bool hidden);

/// Connects to a saved network. Saves nothing.
void rejoin(const cvn::wifi::Client& client, int id, const QString& ssid);

/// As the library's.
void forget(const cvn::wifi::Client& client, const QString& ssid);
