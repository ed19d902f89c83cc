# SPDX-License-Identifier: MIT
"""Proves that Tab completes command lines in bash, zsh and fish."""
import shlex

import pytest

from conftest import PROGRAM, ROOT, profile, put_script, require_tool

COMPLETIONS = shlex.quote(str(ROOT / "completions"))
# Names are asked for; everything else shows which arguments the shell made of the line.
STUB = f"""#!/bin/sh
[ "$*" != "list --cached --json" ] || exec {shlex.quote(str(PROGRAM))} "$@"
printf 'ARGUMENTS'
printf '<%s>' "$@"
echo END
"""
BASH = f". {COMPLETIONS}/corvane-wifi.bash; PS1='ready> '"
ZSH = f"fpath=({COMPLETIONS} $fpath); autoload -U compinit; compinit -u; PS1='ready> '"
FISH = f". {COMPLETIONS}/corvane-wifi.fish; function fish_prompt; echo -n 'ready> '; end"
SHELLS = {"bash": ["--noprofile", "--rcfile", ".rc"], "zsh": [],
          "fish": ["--features", "no-query-term", "-C", FISH]}
# Escapes for wpa_supplicant's own printing come with the simulator's networks.
SAVED = "It's $5 & `x`!", "wow!now", "a:b=c", "},{,saved:true x"
EXPECTED = {  # what is typed before Tab, and the arguments
    "stat": ["status"],
    "list --c": ["list", "--cached"],
    "connect --p": ["connect", "--password-stdin"],
    "forget --y": ["forget", "--yes"],
    "--json disc": ["--json", "disconnect"],
    "connect Hom": ["connect", "Home"],
    "connect --open Mod": ["connect", "--open", "Modern"],
    "connect Bob": ["connect", r'Bob \"5G\" C:\\net'],
    r'connect "Caf\x': ["connect", r"Caf\xc3\xa9 du Nord"],
    "connect 'Bob": ["connect", r'Bob \"5G\" C:\\net'],
    "forget --yes It": ["forget", "--yes", "It's $5 & `x`!"],
    r"forget --yes It\'s\ ": ["forget", "--yes", "It's $5 & `x`!"],
    'forget --yes "It': ["forget", "--yes", "It's $5 & `x`!"],
    'forget --yes "wow': ["forget", "--yes", "wow!now"],
    "forget wow": ["forget", "wow!now"],
    "forget a": ["forget", "a:b=c"],
    "connect a:": ["connect", "a:b=c"],
    "forget '}": ["forget", "},{,saved:true x"],
    "forget Mod": ["forget", "Mod"],
}


@pytest.fixture(params=SHELLS)
def complete(request, folder, environment, terminal):
    """Presses Tab in a shell: gives what it shows meanwhile, and the arguments."""
    require_tool(request.param)
    put_script(folder / "bin/corvane-wifi", STUB)
    (folder / ".rc").write_text(BASH)
    (folder / ".zshrc").write_text(ZSH)
    # Without it fish makes completions from all manual pages, in the background.
    for parent in (".local/share", ".cache"):
        (folder / parent / "fish/generated_completions").mkdir(parents=True)
    shell = terminal(request.param, *SHELLS[request.param])
    shell.expect_exact("ready> ")

    def complete(line):
        shell.send(f"corvane-wifi {line}\t\r")
        shell.expect("ARGUMENTS(.*)END")
        shown, arguments = shell.before, shell.match[1]
        shell.expect_exact("ready> ")
        return shown, arguments

    return complete


def test_actions_flags_and_names_are_completed(simulate, run, complete):
    simulate(profiles="".join(map(profile, SAVED)))
    run(PROGRAM, "list", check=True)  # completions do not scan
    for line, arguments in EXPECTED.items():
        assert complete(line)[1] == "".join(f"<{word}>" for word in arguments), line


def test_no_error_is_shown_without_wpa_supplicant(complete):
    shown, arguments = complete("connect Hom")
    assert arguments == "<connect><Hom>"
    assert "corvane-wifi:" not in shown
