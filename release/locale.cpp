// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// For the static binary. At start Qt calls setlocale(), which reads the files of the user's locale,
// only to check that its encoding is UTF-8. Qt uses UTF-8 in any case, and a static binary has no
// translations, so nothing needs to be read.

extern "C" char* __wrap_setlocale(int, const char*)
{
    static char name[] = "C.UTF-8";
    return name;
}
