# SPDX-License-Identifier: MIT
"""Proves what the examples do: wifi-menu for each choice, status-bar for each change."""
import json
import os
import re
import select
import signal
import subprocess
import sys

import pytest

from conftest import (
    BUILD, LIMIT, PROGRAM, ROOT, processes, profile, put_script, require_tool, wait_until)

MENU = ROOT / "examples/wifi-menu"
BAR = ROOT / "examples/status-bar"
PASSWORD = "home-password"
OFFERS = ["r Scan again", "d Disconnect", "f Forget"]
EVENT = "2: wlan0: <BROADCAST,MULTICAST,UP,LOWER_UP>\n"
BOB = 'Bob "5G" C:\\net'
BOB_PRINTED = r'Bob \"5G\" C:\\net'
BOB_PROFILE = profile(BOB, 'psk="bob-password"')
# Stands for the menus that need a display: gives the next answer, which is a part of an entry or,
# after a colon, what is typed, or fails, as a menu does that is closed.
ROFI = f"""#!{sys.executable}
import json, pathlib, sys
answers, shown = (pathlib.Path(__file__).parents[1] / name for name in ("answers", "shown"))
menus = json.loads(shown.read_text()) + [sys.stdin.read().splitlines()]
shown.write_text(json.dumps(menus))
answer = json.loads(answers.read_text())[len(menus) - 1]
if answer is None:
    sys.exit(1)
print(next((entry for entry in menus[-1] if answer in entry), answer.removeprefix(":")))
"""


@pytest.fixture
def choose(folder, environment, run):
    """Answers the menus, and gives the entries of each."""
    require_tool("jq")
    environment["WIFI_MENU"] = "rofi"
    put_script(folder / "bin/rofi", ROFI)
    put_script(folder / "bin/notify-send",
               "#!/bin/sh\n[ \"$1\" = -- ] && printf '%s\\n' \"$2\" >>said\n")

    def choose(*answers, status=0):
        (folder / "answers").write_text(json.dumps(answers))
        (folder / "shown").write_text("[]")
        assert run(MENU).returncode == status
        shown = json.loads((folder / "shown").read_text())
        assert len(shown) == len(answers), "not every answer belongs to a menu"
        return shown

    return choose


@pytest.fixture
def dialog(terminal):
    """Starts wifi-menu in a terminal, and sends keys whenever it shows something."""
    def dialog(tool, *steps, tracer=()):
        require_tool("jq", tool)
        child = terminal(*tracer, MENU, WIFI_MENU=tool)
        for shown, keys in steps:
            child.expect_exact(shown)
            child.send(keys)
        return child
    return dialog


def end(child, status):
    """What was still shown."""
    shown = child.read()
    wait_until("wifi-menu ends", lambda: not child.isalive())
    assert child.exitstatus == status
    return shown


def saved(wifi):
    return [each["ssid"] for each in json.loads(wifi("list", "--json")) if each["saved"]]


@pytest.mark.parametrize("tool", ["fzf", "whiptail"])
def test_menu_in_a_terminal_shows_the_password_to_nobody(
        simulate, dialog, environment, folder, tool):
    require_tool("strace")
    # A sanitizer for leaks cannot run below it. A shell exports what replaces an exported variable.
    environment |= {"ASAN_OPTIONS": "detect_leaks=0", "password": "exported"}
    tracer = "strace", "-f", "-v", "-s9999", "-etrace=execve", "-o", folder / "trace"
    simulate("Home")
    child = dialog(tool, ("1 Home  [WPA personal, ", ""), ("f Forget", "\r"),
                   ("Password for Home:", ""), tracer=tracer)
    assert not child.getecho()
    child.send(PASSWORD + "\r")
    shown = end(child, 0)
    assert PASSWORD not in shown and "Connected to Home." in shown
    assert child.getecho()
    assert f'psk="{PASSWORD}"' in (folder / "wpa_supplicant.conf").read_text()
    trace = (folder / "trace").read_text()
    assert '"--password-stdin", "Home"' in trace
    assert PASSWORD not in trace


def test_menu_in_a_terminal_turns_echo_on_again_when_interrupted(simulate, dialog):
    pexpect = pytest.importorskip("pexpect")
    simulate("Home")
    child = dialog("fzf", ("f Forget", "\r"), ("Password for Home:", "half a pass"))

    def is_interrupted():  # the first may come before anything reads
        child.sendintr()
        return child.expect([pexpect.EOF, pexpect.TIMEOUT], timeout=10) == 0

    wait_until("wifi-menu ends", is_interrupted)
    assert child.getecho()


@pytest.mark.parametrize("name", ["It's $5 & `x`!", "--title=x", "--help", "-v", "--"])
def test_menu_in_a_terminal_forgets_any_name_after_a_question(simulate, dialog, wifi, name):
    simulate("none", profiles=profile("plain") + profile(name))
    for answer, left in (("\r", ["plain", name]), ("y\r", ["plain"])):
        end(dialog("whiptail", ("f Forget", "f\r"),
                   ("\u2502 Forget", ""),  # the prompt: the first menu redraws its rows
                   ("2 " + name, "\x1b[B\r"), ("yes Forget " + name, answer)), 0)
        assert saved(wifi) == left


@pytest.mark.parametrize("name, facts", [
    (BOB_PRINTED, r"WPA personal, -\d\d dBm, saved"), ("Cafe", r"open, -\d\d dBm")])
def test_menu_joins_saved_and_open_networks_without_a_question_and_leaves_them(
        simulate, choose, wifi, folder, name, facts):
    simulate(BOB, "Cafe", profiles=BOB_PROFILE)
    [entries] = choose(name)
    assert any(re.fullmatch(rf"\d {re.escape(name)}  \[{facts}\]", entry) for entry in entries)
    assert (folder / "said").read_text() == f"Connecting to {name}\nConnected to {name}.\n"
    assert json.loads(wifi("status", "--json"))["ssid"] == name
    [[first, *_]] = choose("d Disconnect")
    assert first.startswith(f"1 * {name}  [") and first.endswith(" dBm, saved]")
    assert "DISCONNECTED" in wifi("status")


def test_menu_forgets_exactly_the_chosen_name_and_shows_blanks_at_its_ends(
        simulate, choose, wifi, folder):
    names = "Hotel ", "Hotel", "  two  blanks ", "It's $5 & `x`!", 'say "so" \\', "caf\u00e9 *"
    simulate("none", profiles="".join(map(profile, names)))
    left = saved(wifi)
    assert left[:4] == list(names[:4])
    while left:
        name = left.pop(0)
        shown = re.sub("^ +| +$", lambda blanks: "\u2423" * len(blanks[0]), name)
        choose("f Forget", f" {shown}  [", f"yes Forget {shown}")
        assert saved(wifi) == left
        assert (folder / "said").read_text().splitlines()[-1] == f"Forgot {name}."


def test_menu_of_an_empty_list_scans_again(simulate, choose):
    simulate("none")
    assert choose("r Scan", None) == [OFFERS, OFFERS]


@pytest.mark.parametrize("answers", [
    [None], [":1"], [":1 pier"], [":d"], ["f Forget", None], ["f Forget", "Old", None],
    ["f Forget", "Old", "no Keep"], ["f Forget", "Old", ":yes"], ["Home", None]])
def test_menu_that_is_closed_or_without_a_choice_does_nothing(simulate, choose, folder, answers):
    simulate("Home", profiles=profile("Old"))
    choose(*answers)
    assert (folder / "wpa_supplicant.conf").read_text() == "update_config=1\n" + profile("Old")
    assert not (folder / "said").exists()


OPTIONS = ["--json", "--cached", "--password-stdin", "--open", "--yes", "-qmljsdebugger=x",
           "--qmljsdebugger=x"]
HEADING = "Networks that corvane-wifi cannot add"
BY_HAND = f'! Add it by hand, see "{HEADING}" in docs/setup.md.'


def test_menu_names_a_section_of_the_guide():
    assert f"\n## {HEADING}\n" in (ROOT / "docs/setup.md").read_text()


@pytest.mark.parametrize("answers, messages", [
    (["Home", "wrong-password"], ["! Timed out connecting to Home."]),
    (["Home", "7 bytes"], ["! A Wi-Fi password has 8 to 63 bytes."]),
    (["Home", "\u00e9" * 32], ["! A Wi-Fi password has 8 to 63 bytes."]),
    (["Home", 'quoted "word"'], ['! The password cannot contain " or \\.', BY_HAND]),
    (["Home", "back\\slash"], ['! The password cannot contain " or \\.', BY_HAND]),
    (["Bob"], ["! A new network cannot have special characters in its name.", BY_HAND]),
    (["Office"], ["! That network uses an unsupported security mode.", BY_HAND])] + [
    ([f" {name}  ["], ["! corvane-wifi takes this name for an option.",
                       "! Use wpa_cli for this network."]) for name in OPTIONS])
def test_menu_tells_failures(simulate, choose, environment, folder, answers, messages):
    simulate("Home", "Office", BOB, profiles="".join(map(profile, OPTIONS)))
    before = (folder / "wpa_supplicant.conf").read_text()
    environment["CORVANE_WIFI_CONNECT_TIMEOUT_MS"] = "1"
    assert choose(*answers, None, status=1)[-1] == messages
    assert (folder / "wpa_supplicant.conf").read_text() == before
    assert (folder / "said").read_text().splitlines()[-1] == messages[0].removeprefix("! ")


@pytest.mark.parametrize("limit, advice", [
    ("2000", "! Back on Cafe."), ("1", "! Could not return to Cafe.")])
def test_menu_returns_to_the_network_before_after_a_failure(
        simulate, choose, environment, wifi, limit, advice):
    simulate("Home", "Cafe")
    choose("Cafe")
    environment["CORVANE_WIFI_CONNECT_TIMEOUT_MS"] = limit
    told = choose("Home", "wrong-password", None, status=1)[-1]
    assert told == ["! Timed out connecting to Home.", advice]
    if limit != "1":
        status = json.loads(wifi("status", "--json"))
        assert (status["state"], status["ssid"]) == ("COMPLETED", "Cafe")


def test_menu_tells_that_there_is_no_wpa_supplicant(choose):
    reason = "Could not connect to wpa_supplicant: No such file or directory"
    assert choose(None, status=1) == [["! " + reason]]


@pytest.mark.parametrize("variables, said", [
    ({"WAYLAND_DISPLAY": "w"}, "fuzzel\n"), ({"DISPLAY": ":0"}, "rofi\n"), ({}, "fzf\n"),
    ({"WIFI_MENU": "tofi"}, "wifi-menu: cannot use tofi\n"),
    ({"WIFI_MENU": "none"}, "wifi-menu: cannot use none\n")])
def test_menu_takes_the_first_tool_that_fits_the_session_and_no_other(
        simulate, run, environment, folder, variables, said):
    require_tool("jq")
    simulate("Home")
    for name in ("fuzzel", "wofi", "rofi", "dmenu", "bemenu", "fzf", "whiptail", "tofi"):
        put_script(folder / "bin" / name, f"#!/bin/sh\necho {name} >&2\n")
    ran = run(MENU, env=environment | variables)
    assert (ran.returncode, ran.stderr) == (int("cannot" in said), said)


@pytest.mark.parametrize("script", [MENU, BAR])
def test_arguments_other_than_help_are_refused(run, script):
    for word, status in (("--help", 0), ("x", 2)):
        ran = run(script, word)
        assert (ran.returncode, ran.stderr) == (status, "")
        assert "Usage: " in ran.stdout


def prints(process, seconds=LIMIT):
    return select.select([process.stdout], [], [], seconds)[0] != []


def line(process):
    assert prints(process), f"waited {LIMIT} s in vain for a line"
    return process.stdout.readline()


@pytest.fixture
def bar(start, folder, environment):
    """Starts a bar, with an `rtmon` that lists nothing and an `ip` that reports on demand."""
    require_tool("jq", "setpriv")
    os.mkfifo(folder / "events")
    events = os.open(folder / "events", os.O_RDWR)  # so that it opens even where nothing reads
    put_script(folder / "bin/rtmon", "#!/bin/sh\necho \"$*\" >asked\nexec sleep 300\n")
    put_script(folder / "bin/ip", f"#!/bin/sh\nprintf '{EVENT}'\nexec cat events\n")
    put_script(folder / "bin/corvane-wifi", f"#!/bin/sh\n'{PROGRAM}' \"$@\"\necho >>answered\n")
    yield lambda *words: start(*words, stdout=subprocess.PIPE)
    os.close(events)


@pytest.fixture
def put(bar, folder):
    """Puts the status that a bar gets."""
    put_script(folder / "bin/corvane-wifi", "#!/bin/sh\necho >>answered\ncat state\n")

    def put(state, ssid="Cafe", address="10.0.0.2"):
        text = json.dumps({"state": state, "ssid": ssid, "address": address})
        (folder / "state").write_text(text + "\n")
        return text
    return put


def test_status_bar_shows_each_change_once_and_sleeps_meanwhile(simulate, bar, wifi, folder):
    started = bar(BAR)
    assert json.loads(line(started)) == {
        "text": "no Wi-Fi", "class": "failed",
        "tooltip": "Could not connect to wpa_supplicant: No such file or directory"}
    assert (folder / "asked").read_text() == "file /dev/stdout link address\n"
    simulate(BOB, profiles=BOB_PROFILE)
    (folder / "events").write_text(EVENT)
    assert json.loads(line(started)) == {
        "text": "offline", "tooltip": "INACTIVE", "class": "disconnected"}

    def switches():
        return re.findall("ctxt.*", "".join(processes(started.pid).values()))

    def sleeps(seconds):
        before = switches()
        assert not prints(started, seconds), "a line without an event"
        return before == switches()

    wait_until("the bar waits for events", lambda: sleeps(0.5))
    assert sleeps(1)
    (folder / "events").write_text(EVENT)
    wait_until("the bar asks again",
               lambda: len((folder / "answered").read_text().splitlines()) == 3)
    wifi("connect", BOB_PRINTED)
    wait_until("there is an address", lambda: "10.66.2.48" in wifi("status"))
    (folder / "events").write_text(EVENT)
    assert json.loads(line(started)) == {
        "text": BOB_PRINTED.replace('"', "&quot;"), "tooltip": "10.66.2.48", "class": "connected"}


@pytest.mark.parametrize("status, shown", [
    (["4WAY_HANDSHAKE", "<b>", ""], ["connecting", "4WAY_HANDSHAKE", "connecting"]),
    (["COMPLETED", "Cafe", ""], ["Cafe (no address)", "COMPLETED", "connecting"]),
    (["COMPLETED", "a\x1b[1m\u0085"], ["a [1m ", "10.0.0.2", "connected"]),
    (["COMPLETED", "%{A1:reboot:}%%{{"], "% {A1:reboot:}%% {{\n")])  # commands for polybar
def test_status_bar_shows_odd_connections(bar, put, status, shown):
    put(*status)
    if isinstance(shown, str):
        assert line(bar(BAR, "--text")) == shown
    else:
        assert json.loads(line(bar(BAR))) == dict(zip(("text", "tooltip", "class"), shown))


@pytest.mark.parametrize("stop", [
    subprocess.Popen.terminate, subprocess.Popen.kill,
    lambda bar: setattr(bar, "stdout", bar.stdout.close()),
    lambda bar: [os.kill(int(process), signal.SIGTERM)
                 for process, text in processes(bar.pid).items() if "(cat)" in text]])
def test_status_bar_leaves_no_process_behind(simulate, bar, stop):
    simulate("Home")
    started = bar(BAR, "--text")
    assert line(started) == "offline\n"
    wait_until("the bar watches its reader", lambda: len(processes(started.pid)) >= 4)
    stop(started)
    wait_until("all processes of the bar have ended",
               lambda: started.poll() is not None and processes(started.pid) == {})


@pytest.fixture
def kernel(bar, folder, run, start):
    """A network namespace with wlan0 and eth0: enters it, and runs the real rtmon and ip."""
    require_tool("unshare", "nsenter")
    (folder / "bin/rtmon").unlink()
    (folder / "bin/ip").unlink()
    make = """mount -t sysfs sysfs /sys && ip link add wlan0 type bridge &&
              ip link add eth0 type bridge && echo >made && exec sleep infinity"""
    if run("unshare", "-rnm", "mount", "-t", "sysfs", "sysfs", "/sys").returncode != 0:
        pytest.skip("needs user namespaces")
    holder = start("unshare", "-rnm", "sh", "-c", make)
    wait_until("there are interfaces", (folder / "made").exists)
    return ["nsenter", "-t", str(holder.pid), "-U", "-n", "-m", "--preserve-credentials",
            f"--wd={folder}"]


def test_status_bar_looks_once_it_is_told_of_changes_and_only_at_those_of_its_interface(
        kernel, bar, put, run, folder):
    later = put("COMPLETED")
    put("DISCONNECTED")
    # What would report the change comes late, so that the change is there before it.
    for name in ("ip", "rtmon"):
        put_script(folder / "bin" / name, f"""#!/bin/sh
            PATH=${{PATH#*:}}:/usr/sbin:/sbin
            sleep 1 && echo '{later}' >state && exec {name} "$@"\n""")
    started = bar(*kernel, BAR, "--text")
    assert line(started) == "Cafe\n"
    looks = (folder / "answered").read_text()
    run(*kernel, "/sbin/ip", "address", "add", "10.0.0.3/24", "dev", "eth0", check=True)
    put("DISCONNECTED")
    assert not prints(started, 1), "it has looked"
    assert (folder / "answered").read_text() == looks
    run(*kernel, "/sbin/ip", "address", "add", "10.0.0.2/24", "dev", "wlan0", check=True)
    assert line(started) == "offline\n"


def test_the_script_for_i3status_ends_with_it(simulate, bar, folder):
    simulate("Home")
    (folder / ".cache").mkdir()
    put_script(folder / "bin/i3status", "#!/bin/sh\nexec sleep infinity\n")
    (folder / "bin/status-bar").symlink_to(BAR)
    readme = (ROOT / "examples/README.md").read_text()
    [script] = re.findall(r"(?m)^    (#!/bin/sh\n(?:    .*\n)+)", readme)
    put_script(folder / "with-wifi", script.replace("\n    ", "\n"))
    started = bar(folder / "with-wifi")
    wait_until("the file is written", lambda: (folder / ".cache/wifi").exists()
               and (folder / ".cache/wifi").read_text() == "offline\n")
    started.kill()
    wait_until("all processes have ended",
               lambda: started.poll() is not None and processes(started.pid) == {})


def test_event_loop_goes_on_while_the_library_works(simulate, run, environment):
    simulate("Cafe")
    environment["CORVANE_WIFI_SCAN_DELAY_MS"] = "1000"
    ran = run(BUILD / "examples/without-blocking/without-blocking", check=True)
    assert re.fullmatch(r"Cafe, -\d\d dBm\n", ran.stdout)
    assert ran.stderr.count("...") >= 3
    environment["CORVANE_WPA_SOCKET"] += "x"
    ran = run(BUILD / "examples/without-blocking/without-blocking")
    assert (ran.returncode, ran.stdout) == (1, "")
    assert "Could not connect to wpa_supplicant: No such file or directory" in ran.stderr
