// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// For the single files. At start Qt calls setlocale(), which reads the files of the user's locale,
// only to check that its encoding is UTF-8. Qt uses UTF-8 in any case, and a single file has no
// translations, so nothing needs to be read.

#include <langinfo.h>
#include <locale.h>

char* __wrap_setlocale(int category, const char* locale)
{
    (void)category;
    (void)locale;
    return "C.UTF-8";
}

char* __wrap_nl_langinfo(nl_item item)
{
    return item == CODESET ? "UTF-8" : "";
}
