# SPDX-License-Identifier: MIT
"""Proves that the manual page has the messages, options and times of the source, and no others."""
import re
import subprocess

import pytest

from conftest import LIMIT, ROOT, manual_page, require_tool

SOURCE = "".join((ROOT / "src" / name).read_text() for name in ("wifi.cpp", "wifi_main.cpp"))


def packed(text):
    """Without white space, since a page breaks lines anywhere."""
    return re.sub(r"\s", "", text)


def literals():
    code = re.sub(r"(?m)^\s*(//|#include).*$", "", SOURCE)
    code = re.sub(r"'(\\.|[^'\\])'", "", code)
    code = re.sub(r'"(_s|_L1)?\s+u?"', "", code)  # one literal over several lines
    return re.findall(r'"((?:\\.|[^"\\])*)"', code)


@pytest.mark.parametrize("page", ["corvane-wifi.1", "corvane-wifi-panel.1"])
def test_is_what_mandoc_accepts(page):
    require_tool("mandoc")
    # Which other manual pages are installed does not matter, nor does their index, which the
    # messages on standard error are about.
    command = ["mandoc", "-T", "lint", ROOT / "man" / page]
    linted = subprocess.run(command, text=True, timeout=LIMIT, capture_output=True)
    assert [line for line in linted.stdout.splitlines()
            if "referenced manual not found" not in line] == []


def test_has_every_text_of_the_program():
    page = packed(manual_page())
    # Placeholders are filled in at run time, and escapes are layout.
    pieces = [piece for literal in literals() for piece in re.split(r"%\d|\\[nrt0]", literal)]
    wanted = {re.sub(r"^Usage:|\\(?=.)", "", packed(piece)).strip("],") for piece in pieces}
    assert [text for text in wanted if re.search("[A-Za-z]{2}", text) and text not in page] == []


def test_has_no_flag_or_variable_that_the_program_lacks():
    found = re.findall(r"(?<![\w-])(--[a-z-]+[a-z]|CORVANE_[A-Z_]+[A-Z])", manual_page())
    assert found
    assert set(found) - set(literals()) == set()


@pytest.mark.parametrize("phrase, unit, code", [
    (r"within (\d+) seconds", 1000, r"reply_timeout_ms = (\d+);"),
    (r"every (\d+) ms", 1, r"msleep\((\d+)\)"),
    (r"SCAN_DELAY_MS How long .*? (\d+) if unset", 1, r'SCAN_DELAY_MS", (\d+)\)'),
    (r"CONNECT_TIMEOUT_MS How long .*? (\d+) if unset", 1, r"connect_timeout_ms = (\d+);"),
])
def test_has_the_times_of_the_program(phrase, unit, code):
    [time] = set(re.findall(code, SOURCE))
    stated = re.findall(phrase, " ".join(manual_page().split()))
    assert {int(number) * unit for number in stated} == {int(time)}
