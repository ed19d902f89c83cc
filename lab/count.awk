# SPDX-License-Identifier: MIT
# Numbers the checks, and ends with their sum.
/^ok - /     { passed++ }
/^not ok - / { failed++ }
/^machine done/ { next }
{ sub(/ok - /, "ok " passed + failed " - "); print; fflush() }
END {
    print passed + 0 " passed, " failed + 0 " failed"
    exit failed > 0 || passed == 0
}
