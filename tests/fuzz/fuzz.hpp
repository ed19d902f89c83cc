// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#pragma once

#include <QByteArrayList>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// What libFuzzer, or replay.cpp, calls with each input.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

/// An assert() for every build. libFuzzer keeps the input that ends here.
inline void require(bool holds, const char* property)
{
    if (holds)
        return;
    std::fprintf(stderr, "Violated: %s\n", property);
    std::abort();
}

inline QByteArray bytes(const uint8_t* data, size_t size)
{
    return {reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)};
}

/// The texts of an input. Each but the last ends with a per cent sign and a line feed.
inline QByteArrayList texts(QByteArray input)
{
    QByteArrayList result;
    for (qsizetype end = 0; (end = input.indexOf("%\n")) >= 0; input.remove(0, end + 2))
        result += input.left(end);
    return result << input;
}
