// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// Names and failures as the window shows them.

#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// The bytes of a name, from what wpa_supplicant prints for it (`Caf\xc3\xa9`).
QByteArray bytes_of(const QString& printed);

/// The name as people write it (`Café`), or as printed if it is not UTF-8, or if a character in it
/// is invisible or a blank other than a space. Spaces at the ends and next to another are drawn.
QString readable(const QString& printed);

/// A name between other words, whichever way each of them is written.
QString isolated(const QString& name);

/// The message of what `action` throws, or nothing.
QString failure_of(const std::function<void()>& action);

/// What went wrong, in the user's language, and what helps. `message` is from the library.
QString explained(const QString& message);
