// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// For the single files. At its start Qt asks for LC_ALL, which is a dozen files and a fifth of what
// a run costs. Only the encoding is used; without the rest errors have the same text everywhere.

#include <locale.h>

char* __real_setlocale(int category, const char* locale);

char* __wrap_setlocale(int category, const char* locale)
{
    return __real_setlocale(category == LC_ALL ? LC_CTYPE : category, locale);
}
