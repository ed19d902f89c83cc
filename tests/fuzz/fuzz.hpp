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
inline void require(bool kept, const char* promise)
{
    if (kept)
        return;
    std::fprintf(stderr, "Broken promise: %s\n", promise);
    std::abort();
}

inline QByteArray bytes(const uint8_t* data, size_t size)
{
    return {reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)};
}

/// An input of several texts: each but the last ends in a per cent sign and a line feed.
inline QByteArrayList texts(QByteArray input)
{
    QByteArrayList result;
    for (qsizetype end = 0; (end = input.indexOf("%\n")) >= 0; input.remove(0, end + 2))
        result += input.left(end);
    return result << input;
}
