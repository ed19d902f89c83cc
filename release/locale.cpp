// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// For the static binary. At start Qt calls setlocale(), which reads the files of the user's locale,
// only to check that its encoding is UTF-8. Qt uses UTF-8 in any case, and a static binary has no
// translations, so nothing needs to be read.

#include <langinfo.h>

extern "C" char* __wrap_setlocale(int, const char*)
{
    static char name[] = "C.UTF-8";
    return name;
}

extern "C" char* __wrap_nl_langinfo(nl_item item)
{
    static char utf8[] = "UTF-8", none[] = "";
    return item == CODESET ? utf8 : none;
}
