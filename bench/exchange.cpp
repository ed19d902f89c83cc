// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// exchange SOCKET REQUEST... prints the replies: the least that such a program can cost.

#include "exchange.hpp"

int main(int argc, char** argv)
{
    static char reply[65536];
    for (int i = 2; i < argc; ++i) {
        const ssize_t size = exchange(argv[1], argv[i], reply, sizeof reply);
        if (size < 0 || write(STDOUT_FILENO, reply, static_cast<size_t>(size)) != size)
            return 1;
    }
}
