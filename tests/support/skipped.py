#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Usage: tests/support/skipped.py FILE
Prints the tests that were skipped, with the reason of each, from a FILE of ctest --output-junit.
"""
import re
import sys
import xml.etree.ElementTree

if len(sys.argv) != 2 or sys.argv[1] == "--help":
    print(__doc__, end="")
    sys.exit(0 if sys.argv[1:] == ["--help"] else 2)
reasons = {}
for test in xml.etree.ElementTree.parse(sys.argv[1]).iter("testcase"):
    if test.find("skipped") is not None:
        output = test.findtext("system-out", "")
        # GoogleTest's form, then that of pytest -rs.
        reason = re.search(r": Skipped\n(.*)|^SKIPPED .*?: (.*)", output, re.M)
        why = reason[1] or reason[2] if reason else output.strip() or "no reason given"
        reasons.setdefault(why, []).append(test.get("name"))
for why, names in reasons.items():
    print(f"skipped, {why}:", *names, sep="\n    ")
