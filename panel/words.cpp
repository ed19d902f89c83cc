// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "words.hpp"

#include <QCoreApplication>
#include <QRegularExpression>

#include <cerrno>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

/// What the library throws, where %1 is a name, a reply or the system's words.
const char* const failures[] = {
    QT_TRANSLATE_NOOP("Library", "Could not open Wi-Fi control socket: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not bind temporary Wi-Fi control socket: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not protect temporary Wi-Fi control socket: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not connect to wpa_supplicant: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not send Wi-Fi command: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not read Wi-Fi response: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not start Wi-Fi scan: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not select saved Wi-Fi network: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not set Wi-Fi network name: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not set open-network security: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not set WPA security: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not set WPA password: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not enable Wi-Fi network: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not select Wi-Fi network: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not save Wi-Fi network: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not disconnect Wi-Fi: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not remove Wi-Fi network: %1"),
    QT_TRANSLATE_NOOP("Library", "Could not save removed Wi-Fi network: %1"),
    QT_TRANSLATE_NOOP("Library", "%1 is not a saved network."),
    QT_TRANSLATE_NOOP("Library", "Wi-Fi control socket path is too long."),
    QT_TRANSLATE_NOOP("Library", "Invalid wpa_supplicant control command."),
    QT_TRANSLATE_NOOP("Library", "wpa_supplicant did not create a network profile."),
};

bool is_plain(const QString& text)
{
    for (const char32_t c : text.toUcs4())
        if (!QChar::isPrint(c) || (QChar::isSpace(c) && c != U' '))
            return false;
    // Letters and symbols that are blank, what stands for a space, and for what is not UTF-8.
    return text.indexOf(QRegularExpression(u"[\u115f\u1160\u2800\u3164\uffa0\u2423\ufffd]"_s)) < 0;
}

} // namespace

QByteArray bytes_of(const QString& printed)
{
    constexpr std::string_view letters = "nrte", controls = "\n\r\t\x1b";
    const QByteArray text = printed.toUtf8();
    QByteArray bytes;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            bytes += text[i];
        } else if (text[++i] == 'x') {
            bytes += QByteArray::fromHex(text.mid(i + 1, 2));
            i += 2;
        } else {
            const size_t found = letters.find(text[i]);
            bytes += found == std::string_view::npos ? text[i] : controls[found];
        }
    }
    return bytes;
}

QString readable(const QString& printed)
{
    QString name = QString::fromUtf8(bytes_of(printed));
    if (!is_plain(name))
        return printed;
    const QString spaced = u' ' + name + u' ';
    for (qsizetype i = 0; i < name.size(); ++i)
        if (name[i] == u' ' && (spaced[i] == u' ' || spaced[i + 2] == u' '))
            name[i] = u'\u2423';
    return name;
}

QString isolated(const QString& name)
{
    return u'\u2068' + name + u'\u2069';
}

QString failure_of(const std::function<void()>& action)
{
    try {
        action();
    } catch (const std::exception& failure) {
        return QString::fromUtf8(failure.what());
    }
    return {};
}

QString explained(const QString& message)
{
    const auto translated = [](const char* text) {
        return QCoreApplication::translate("Library", text);
    };
    const auto is_unreachable = [&](int error) {
        const QString why = QString::fromLocal8Bit(std::strerror(error));
        return message == u"Could not connect to wpa_supplicant: "_s + why;
    };
    if (is_unreachable(EACCES))
        return translated(QT_TRANSLATE_NOOP(
            "Library", "You may not control Wi-Fi. Your user must be in the group netdev."));
    if (is_unreachable(ENOENT) || is_unreachable(ENOTDIR) || is_unreachable(ECONNREFUSED))
        return translated(QT_TRANSLATE_NOOP("Library", "The Wi-Fi service is not running."));
    if (message == "Timed out waiting for wpa_supplicant."_L1)
        return translated(QT_TRANSLATE_NOOP("Library", "The Wi-Fi service does not answer."));
    for (const char* failure : failures) {
        const QStringList ends = QString::fromLatin1(failure).split(u"%1"_s);
        if (!message.startsWith(ends.first()) || !message.endsWith(ends.last()))
            continue;
        const qsizetype rest = message.size() - ends.first().size() - ends.last().size();
        const QString words = translated(failure);
        return ends.size() == 1 ? words : words.arg(message.mid(ends.first().size(), rest));
    }
    return message;
}
