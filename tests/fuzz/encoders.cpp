// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "fuzz.hpp"

#include "cvn/wifi.hpp"

using cvn::wifi::Client;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(bytes(data, size));
    const QByteArray utf8 = text.toUtf8();

    const QByteArray name = Client::encode_ssid(text);
    require(name.size() == 2 * utf8.size(), "a name has two digits per byte");
    require(name == name.toLower(), "a name has lower-case digits");
    require(QByteArray::fromHex(name) == utf8, "a name can be read back");

    const bool refused = utf8.contains('\0') || utf8.contains('\n') || utf8.contains('\r');
    QByteArray escaped = utf8;
    escaped.replace('\\', "\\\\").replace('"', "\\\"");
    try {
        const QByteArray password = Client::encode_password(text);
        require(!refused, "NUL and line ends are refused");
        require(password == '"' + escaped + '"',
                "a password is quoted, with quotes and backslashes escaped");
    } catch (const std::runtime_error& error) {
        require(refused, "only NUL and line ends are refused");
        require(error.what()
                    == QByteArray("Wi-Fi passwords cannot contain NUL or newline characters."),
                "the error does not contain the password");
    }
    return 0;
}
