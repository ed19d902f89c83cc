# SPDX-License-Identifier: MIT
"""Proves that the commands in the documents work, and that the links lead to files."""
import json
import re

import pytest

from conftest import ROOT, broken_links, manual_page, profile, require_tool


@pytest.fixture
def check(folder, simulate, run, wifi):
    """Runs commands one after another: each must succeed without an error."""
    require_tool("jq")
    (folder / "password-file").write_text("library-password\n")
    # Signals vary from scan to scan, but not enough to change the order of these.
    simulate("Home", "Cafe", "Library", profiles=profile("Home", 'psk="home-password"'))
    names = [network["ssid"] for network in json.loads(wifi("list", "--json"))]

    def check(commands):
        for command in commands:
            # `pick` gets the number of an open network.
            ended = run("sh", "-euc", command, input=f"{names.index('Cafe') + 1}\n")
            errors = ended.stderr.removeprefix("Network number: ")
            assert (ended.returncode, errors) == (0, ""), command

    return check


def test_commands_of_the_readme_show_and_run_every_action(check, wifi):
    commands = re.findall(r"(?m)^    (corvane-wifi .*)", (ROOT / "README.md").read_text())
    actions = re.findall(r"corvane-wifi (\w+)", wifi("help"))
    assert {command.split()[1] for command in commands} == set(actions)
    check(commands)


def test_commands_of_the_manual_page_run(check):
    page = manual_page()
    lines = re.findall(r"(?m)^ *\$ (.*corvane-wifi .*)", page)
    loops = re.findall(r"(?ms)^ *(corvane-wifi [^\n]* \|\n.*?done)$", page)
    assert lines and loops
    check(command.replace("'Home 2'", "Library") for command in lines + loops)


def test_links_lead_to_files():
    assert broken_links([*ROOT.glob("*.md"), *ROOT.glob("*/*.md")]) == []
