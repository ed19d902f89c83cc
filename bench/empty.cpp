// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// What a Qt program costs before it does anything.

#include <QCoreApplication>

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
}
