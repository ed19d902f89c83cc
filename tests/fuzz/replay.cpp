// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "fuzz.hpp"

#include <QFile>

/// In place of libFuzzer: runs the inputs in the named files, once each.
int main(int argc, char** argv)
{
    require(argc > 1, "there are inputs");
    for (int i = 1; i < argc; ++i) {
        QFile file(QFile::decodeName(argv[i]));
        require(file.open(QIODevice::ReadOnly), argv[i]);
        const QByteArray input = file.readAll();
        std::fprintf(stderr, "Running: %s\n", argv[i]);
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.constData()),
                               static_cast<size_t>(input.size()));
    }
}
