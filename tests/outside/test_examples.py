# SPDX-License-Identifier: MIT
"""Proves what the examples do: wifi-menu for each choice, status-bar for each change."""
import contextlib
import json
import os
import pathlib
import re
import select
import shlex
import signal
import subprocess
import sys

import pytest

from conftest import BUILD, LIMIT, PROGRAM, ROOT, profile, put_script, require_tool, wait_until

MENU = ROOT / "examples/wifi-menu"
BAR = ROOT / "examples/status-bar"
README = ROOT / "examples/README.md"
PASSWORD = "home-password"
OFFERS = ["r Scan again", "d Disconnect", "f Forget"]
BOB = 'Bob "5G" C:\\net'
BOB_PRINTED = r'Bob \"5G\" C:\\net'
BOB_PROFILE = profile(BOB, 'psk="bob-password"')
# Stands for the menus that need a display: gives the next answer, which is a part of an entry or,
# after a colon, what is typed, or fails, as a menu does that is closed.
ROFI = f"""#!{sys.executable}
import json, pathlib, sys
answers, shown = (pathlib.Path(__file__).parents[1] / name for name in ("answers", "shown"))
answer, *rest = json.loads(answers.read_text())
answers.write_text(json.dumps(rest))
entries = sys.stdin.read().splitlines()
with shown.open("a") as file:
    print(json.dumps(entries), file=file)
if answer is None:
    sys.exit(1)
print(next((entry for entry in entries if answer in entry), answer.removeprefix(":")))
"""


@pytest.fixture
def choose(folder, environment, run):
    """Answers the menus: gives the status of wifi-menu, and the entries of each menu."""
    require_tool("jq")
    environment["WIFI_MENU"] = "rofi"
    put_script(folder / "bin/rofi", ROFI)
    put_script(folder / "bin/notify-send", '#!/bin/sh\n[ "$1" = -- ] && echo "$2" >>said\n')

    def choose(*answers, tracer=()):
        (folder / "answers").write_text(json.dumps(answers))
        (folder / "shown").write_text("")
        status = run(*tracer, MENU).returncode
        assert (folder / "answers").read_text() == "[]", "answers are left over"
        return status, list(map(json.loads, (folder / "shown").read_text().splitlines()))

    return choose


@pytest.fixture
def tracer(folder, environment):
    """Writes down arguments and environments. A sanitizer for leaks cannot run below it."""
    require_tool("strace")
    environment["ASAN_OPTIONS"] = "detect_leaks=0"
    environment["password"] = "exported"  # a shell would export what replaces this
    return "strace", "-f", "-v", "-s9999", "-etrace=execve", "-o", folder / "trace"


@pytest.fixture
def menu(terminal):
    """Starts wifi-menu with a tool for terminals."""
    def menu(tool, tracer=()):
        require_tool("jq", tool)
        return terminal(*tracer, MENU, WIFI_MENU=tool)
    return menu


def end(child):
    """The exit status, and what was still shown."""
    shown = child.read()
    wait_until("wifi-menu ends", lambda: not child.isalive())
    return child.exitstatus, shown


def check_password(folder):
    assert f'psk="{PASSWORD}"' in (folder / "wpa_supplicant.conf").read_text()
    trace = (folder / "trace").read_text()
    assert '"--password-stdin", "Home"' in trace
    assert PASSWORD not in trace


def test_menu_passes_a_password_in_no_argument_and_no_environment(simulate, choose, tracer, folder):
    simulate("Home")
    status, [[entry, *offers], question] = choose("Home", PASSWORD, tracer=tracer)
    assert (status, offers, question) == (0, OFFERS, [])
    assert re.fullmatch(r"1 Home  \[WPA personal, -\d\d dBm\]", entry)
    check_password(folder)


@pytest.mark.parametrize("tool", ["fzf", "whiptail"])
def test_menu_in_a_terminal_hides_the_password(simulate, menu, tracer, folder, tool):
    simulate("Home")
    child = menu(tool, tracer)
    child.expect("1 Home  .WPA personal, .*Forget")
    child.send("\r")
    child.expect_exact("Password for Home:")
    assert not child.getecho()
    child.send(PASSWORD + "\r")
    status, shown = end(child)
    assert status == 0
    assert PASSWORD not in shown
    assert child.getecho()
    check_password(folder)


def test_menu_in_a_terminal_turns_echo_on_again_when_interrupted(simulate, menu):
    pexpect = pytest.importorskip("pexpect")
    simulate("Home")
    child = menu("fzf")
    child.expect_exact("Forget")
    child.send("\r")
    child.expect_exact("Password for Home:")
    child.send("half a pass")

    def is_interrupted():  # the first may come before anything reads
        child.sendintr()
        return child.expect([pexpect.EOF, pexpect.TIMEOUT], timeout=10) == 0

    wait_until("wifi-menu ends", is_interrupted)
    assert child.getecho()


def test_menu_in_a_terminal_forgets_after_a_question(simulate, menu, wifi):
    simulate("none", profiles=profile("plain") + profile("It's $5 & `x`!"))
    for answer, left in (("\r", ["plain", "It's $5 & `x`!"]), ("y\r", ["plain"])):
        child = menu("whiptail")
        child.expect_exact("f Forget")
        child.send("f\r")
        child.expect_exact("2 It's $5 & `x`!")
        child.send("\x1b[B\r")  # down
        child.expect_exact("yes Forget It's $5 & `x`!")
        child.send(answer)
        assert end(child)[0] == 0
        assert [network["ssid"] for network in json.loads(wifi("list", "--json"))] == left


@pytest.mark.parametrize("name", ["--title=x", "--help", "-v", "--"])
def test_menu_in_a_terminal_takes_no_name_for_an_option(simulate, menu, wifi, name):
    simulate("none", profiles=profile(name))
    child = menu("whiptail")
    child.expect_exact("1 " + name)
    child.expect_exact("f Forget")
    child.send("f\r")
    child.expect_exact("\u2502 Forget")  # the prompt: the first menu redraws its rows
    child.expect_exact("1 " + name)
    child.send("\r")
    child.expect_exact("yes Forget " + name)
    child.send("y\r")
    assert end(child)[0] == 0
    assert json.loads(wifi("list", "--json")) == []


def test_menu_in_a_terminal_tells_failures(simulate, menu):
    simulate("Office")
    child = menu("whiptail")
    child.expect_exact("f Forget")
    child.send("\r")
    child.expect_exact("! That network uses an unsupported security mode.")
    child.send("\r")
    assert end(child)[0] == 1


@pytest.mark.parametrize("name, shown", [(BOB_PRINTED, "saved]"), ("Cafe", "[open")])
def test_menu_connects_to_saved_and_open_networks_without_a_question(
        simulate, choose, wifi, name, shown):
    simulate(BOB, "Cafe", profiles=BOB_PROFILE)
    status, [entries] = choose(name)
    assert status == 0
    [entry] = [entry for entry in entries if name in entry]
    assert shown in entry
    assert json.loads(wifi("status", "--json"))["ssid"] == name


def test_menu_forgets_exactly_the_chosen_name(simulate, choose, wifi):
    names = ["  two  blanks ", "It's $5 & `x`!", 'say "so" \\', "caf\u00e9 *", "plain"]
    simulate("none", profiles="".join(map(profile, names)))

    def saved():
        return [network["ssid"] for network in json.loads(wifi("list", "--json"))]

    for part in ("two", "$5", "say", "caf", "plain"):
        before = saved()
        assert choose("f Forget", part, "yes Forget")[0] == 0
        assert saved() == [name for name in before if part not in name]
    assert saved() == []


def test_menu_disconnects(simulate, choose, wifi):
    simulate("Cafe")
    choose("Cafe")
    status, [[first, *_]] = choose("d Disconnect")
    assert status == 0
    assert re.fullmatch(r"1 \* Cafe  \[open, -\d\d dBm, saved\]", first)
    assert "DISCONNECTED" in wifi("status")


def test_menu_scans_again(simulate, choose):
    simulate("Cafe")
    status, menus = choose("r Scan", "Cafe")
    assert (status, [entries[1:] for entries in menus]) == (0, [OFFERS, OFFERS])


def test_menu_of_an_empty_list_still_scans_and_forgets(simulate, choose):
    simulate("none")
    assert choose(None) == (0, [OFFERS])


@pytest.mark.parametrize("answers", [
    [None], ["nonsense"], [":1"], [":1 pier"], [":d"], [":d link"],
    ["f Forget", None], ["f Forget", "nonsense"],
    ["f Forget", "Old", None], ["f Forget", "Old", "no Keep"], ["f Forget", "Old", ":yes"],
    ["Home", None]])
def test_menu_that_is_closed_or_without_a_choice_does_nothing(
        simulate, choose, wifi, folder, answers):
    simulate("Home", profiles=profile("Old"))
    assert choose(*answers)[0] == 0
    assert (folder / "wpa_supplicant.conf").read_text() == "update_config=1\n" + profile("Old")
    [network] = [network for network in json.loads(wifi("list", "--json")) if network["saved"]]
    assert (network["ssid"], network["current"]) == ("Old", False)


BY_HAND = '! Add it by hand: see /usr/share/doc/corvane-wifi/setup.md, "A name such as Caf\u00e9".'


@pytest.mark.parametrize("answers, messages", [
    (["Home", "wrong-password"], ["! Timed out connecting to Home."]),
    (["Home", "7 bytes"], ["! A Wi-Fi password has 8 to 63 bytes."]),
    (["Home", "\u00e9" * 32], ["! A Wi-Fi password has 8 to 63 bytes."]),
    (["Home", 'quoted "word"'], ['! The password cannot contain " or \\.', BY_HAND]),
    (["Home", "back\\slash"], ['! The password cannot contain " or \\.', BY_HAND]),
    (["Bob"], ["! A new network cannot have special characters in its name.", BY_HAND]),
    (["Office"], ["! That network uses an unsupported security mode.", BY_HAND])])
def test_menu_tells_failures(simulate, choose, environment, folder, answers, messages):
    simulate("Home", "Office", BOB)
    environment["CORVANE_WIFI_CONNECT_TIMEOUT_MS"] = "1"
    status, menus = choose(*answers, None)
    assert (status, menus[-1]) == (1, messages)
    assert "network" not in (folder / "wpa_supplicant.conf").read_text()
    assert (folder / "said").read_text().splitlines()[-1] == messages[0].removeprefix("! ")


def test_menu_says_what_it_does_without_markup(simulate, choose, folder):
    simulate("Cafe")
    choose("Cafe")
    assert (folder / "said").read_text() == "Connecting to Cafe\nConnected to Cafe.\n"


def test_menu_returns_to_the_network_before_after_a_failure(simulate, choose, environment, wifi):
    simulate("Home", "Cafe")
    choose("Cafe")
    environment["CORVANE_WIFI_CONNECT_TIMEOUT_MS"] = "2000"
    status, menus = choose("Home", "wrong-password", None)
    assert (status, menus[-1]) == (1, ["! Timed out connecting to Home.", "! Back on Cafe."])
    status = json.loads(wifi("status", "--json"))
    assert (status["state"], status["ssid"]) == ("COMPLETED", "Cafe")


def test_menu_shows_blanks_at_the_ends_of_names(simulate, choose, folder):
    simulate("none", profiles=profile("Hotel") + profile("Hotel ") + profile("  Ho tel"))
    [entries] = choose(None)[1]
    assert [entry.split("  [")[0] for entry in entries[:3]] == [
        "1 Hotel", "2 Hotel\u2423", "3 \u2423\u2423Ho tel"]
    choose("f Forget", "Hotel\u2423", "yes Forget Hotel\u2423")
    assert (folder / "said").read_text() == "Forgot Hotel .\n"


@pytest.mark.parametrize("name", ["--json", "--cached", "--password-stdin", "--open", "--yes",
                                  "--qmljsdebugger=x"])
def test_menu_refuses_names_that_the_program_takes_for_options(simulate, choose, name):
    simulate("none", profiles=profile(name))
    status, menus = choose("1 " + name, None)
    assert (status, menus[-1][0]) == (1, "! corvane-wifi takes this name for an option.")


def test_menu_tells_that_there_is_no_wpa_supplicant(choose):
    reason = "Could not connect to wpa_supplicant: No such file or directory"
    assert choose(None) == (1, [["! " + reason]])


@pytest.mark.parametrize("session, tool", [
    ({"WAYLAND_DISPLAY": "w"}, "fuzzel"), ({"DISPLAY": ":0"}, "rofi"), ({}, "fzf")])
def test_menu_takes_the_first_tool_that_fits_the_session(
        simulate, run, environment, folder, session, tool):
    require_tool("jq")
    simulate("Home")
    for name in ("fuzzel", "wofi", "rofi", "dmenu", "bemenu", "fzf", "whiptail"):
        put_script(folder / "bin" / name, f"#!/bin/sh\necho {name} >>taken\n")
    run(MENU, env=environment | session, check=True)
    assert (folder / "taken").read_text() == tool + "\n"


@pytest.mark.parametrize("script", [MENU, BAR])
def test_arguments_other_than_help_are_refused(run, script):
    for word, status in (("--help", 0), ("x", 2)):
        ran = run(script, word)
        assert (ran.returncode, ran.stderr) == (status, "")
        assert "Usage: " in ran.stdout


@pytest.mark.parametrize("tool", ["tofi", "missing"])
def test_menu_refuses_tools_that_it_does_not_know(run, environment, folder, tool):
    put_script(folder / "bin/tofi", "#!/bin/sh\n")
    ran = run(MENU, env=environment | {"WIFI_MENU": tool})
    assert (ran.returncode, ran.stderr) == (1, f"wifi-menu: cannot use {tool}\n")


class StatusBar:
    """The running script, with an `rtmon` that lists nothing and an `ip` that reports on demand."""

    def __init__(self, start, folder, *words, script=BAR):
        self.process = start(script, *words, stdout=subprocess.PIPE, start_new_session=True)
        # Also for reading, so that it opens even where nothing reads.
        self.pipe = os.open(folder / "events", os.O_RDWR)

    def report_event(self, interface="wlan0"):
        os.write(self.pipe, f"2: {interface}: <BROADCAST,MULTICAST,UP,LOWER_UP>\n".encode())

    def prints(self, seconds):
        return select.select([self.process.stdout], [], [], seconds)[0] != []

    def line(self):
        assert self.prints(LIMIT), f"waited {LIMIT} s in vain for a line"
        return self.process.stdout.readline()

    def processes(self):
        """How often each was given a processor."""
        switches = {}
        for path in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if (os.getpgid(int(path.name)) == self.process.pid
                        and not (path / "stat").read_text().split(") ")[1].startswith("Z")):
                    facts = (path / "status").read_text()
                    switches[path.name] = re.findall("(?m)^.*ctxt.*$", facts)
            except OSError:  # it has ended
                pass
        return switches


@pytest.fixture
def bar(start, folder, environment):
    require_tool("jq", "setpriv")
    os.mkfifo(folder / "events")
    put_script(folder / "bin/rtmon", "#!/bin/sh\necho \"$*\" >asked\nexec sleep infinity\n")
    put_script(folder / "bin/ip", "#!/bin/sh\necho '2: wlan0: <BROADCAST>'\nexec cat events\n")
    # Notes when the program has answered.
    put_script(folder / "bin/corvane-wifi",
               f"#!/bin/sh\n{shlex.quote(str(PROGRAM))} \"$@\"\nstatus=$?\n"
               "echo >>answered\nexit $status\n")
    bars = []

    def bar(*words, **options):
        bars.append(StatusBar(start, folder, *words, **options))
        return bars[-1]

    yield bar
    for bar in bars:
        os.close(bar.pipe)
        with contextlib.suppress(ProcessLookupError):  # also what a failure leaves behind
            os.killpg(bar.process.pid, signal.SIGKILL)


def test_status_bar_shows_each_change_once_and_sleeps_meanwhile(simulate, bar, wifi, folder):
    simulate(BOB, profiles=BOB_PROFILE)
    started = bar()
    assert json.loads(started.line()) == {
        "text": "offline", "tooltip": "INACTIVE", "class": "disconnected"}
    assert (folder / "asked").read_text() == "file /dev/stdout link address\n"

    def sleeps(seconds):
        before = started.processes()
        assert not started.prints(seconds), "a line without an event"
        return started.processes() == before

    wait_until("the bar waits for events", lambda: sleeps(0.5))
    assert sleeps(1)
    started.report_event()
    wait_until("the bar asks again",
               lambda: len((folder / "answered").read_text().splitlines()) == 2)
    wifi("connect", BOB_PRINTED)
    wait_until("there is an address", lambda: "10.66.2.48" in wifi("status"))
    started.report_event()
    assert json.loads(started.line()) == {
        "text": BOB_PRINTED.replace('"', "&quot;"), "tooltip": "10.66.2.48", "class": "connected"}


def test_status_bar_shows_a_connection_on_its_way(bar, folder):
    status = {"state": "4WAY_HANDSHAKE", "ssid": "<b>", "address": "", "saved_id": 0}
    put_script(folder / "bin/corvane-wifi", f"#!/bin/sh\necho '{json.dumps(status)}'\n")
    assert json.loads(bar().line())["class"] == "connecting"


def test_status_bar_is_plain_text_on_request(simulate, bar, wifi):
    simulate("Cafe")
    wifi("list")
    wifi("connect", "--open", "Cafe")
    wait_until("there is an address", lambda: "10.66.2.48" in wifi("status"))
    assert bar("--text").line() == "Cafe\n"


def test_status_bar_shows_that_the_socket_is_missing_and_recovers(simulate, bar):
    started = bar()
    assert json.loads(started.line()) == {
        "text": "no Wi-Fi", "class": "failed",
        "tooltip": "Could not connect to wpa_supplicant: No such file or directory"}
    simulate("Home")
    started.report_event()
    assert json.loads(started.line())["class"] == "disconnected"


@pytest.mark.parametrize("status, expected", [
    ({"state": "COMPLETED", "ssid": "Cafe", "address": ""},
     {"text": "Cafe (no address)", "tooltip": "COMPLETED", "class": "connecting"}),
    ({"state": "COMPLETED", "ssid": "a\x1b[1m\u0085", "address": "10.0.0.2"},
     {"text": "a [1m ", "tooltip": "10.0.0.2", "class": "connected"})])
def test_status_bar_shows_odd_connections(bar, folder, status, expected):
    put_script(folder / "bin/corvane-wifi",
               f"#!/bin/sh\ncat <<'END'\n{json.dumps(status | {'saved_id': 0})}\nEND\n")
    assert json.loads(bar().line()) == expected


def test_status_bar_prints_no_command_for_polybar(bar, folder):
    status = {"state": "COMPLETED", "ssid": "%{A1:reboot:}%%{{", "address": "10.0.0.2"}
    put_script(folder / "bin/corvane-wifi", f"#!/bin/sh\necho '{json.dumps(status)}'\n")
    assert bar("--text").line() == "% {A1:reboot:}%% {{\n"


@pytest.mark.parametrize("how", ["TERM", "KILL", "reader"])
def test_status_bar_leaves_no_process_behind(simulate, bar, how):
    simulate("Home")
    started = bar("--text")
    assert started.line() == "offline\n"
    wait_until("the bar watches its reader", lambda: len(started.processes()) >= 4)
    if how == "reader":
        started.process.stdout.close()
        started.process.stdout = None
    else:
        started.process.send_signal(getattr(signal, "SIG" + how))
    wait_until("all processes of the bar have ended",
               lambda: started.process.poll() is not None and started.processes() == {})


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


def answer_from_file(folder):
    put_script(folder / "bin/corvane-wifi", "#!/bin/sh\necho >>answered\ncat state\n")

    def put(state):
        text = json.dumps({"state": state, "ssid": "Cafe", "address": "10.0.0.2"})
        (folder / "state").write_text(text + "\n")
        return text
    return put


def test_status_bar_loses_no_change_at_its_start(kernel, start, folder):
    state = answer_from_file(folder)
    later = state("COMPLETED")
    state("DISCONNECTED")
    # What would report the change comes late, so that the change is there before it.
    for name in ("ip", "rtmon"):
        put_script(folder / "bin" / name, f"""#!/bin/sh
            PATH=${{PATH#*:}}:/usr/sbin:/sbin
            sleep 1 && echo '{later}' >state && exec {name} "$@"\n""")
    process = start(*kernel, BAR, "--text", stdout=subprocess.PIPE)
    lines = select.select([process.stdout], [], [], LIMIT)[0]
    assert lines and process.stdout.readline() == "Cafe\n"


def test_status_bar_looks_only_after_events_of_its_interface(kernel, start, run, folder):
    state = answer_from_file(folder)
    state("DISCONNECTED")
    process = start(*kernel, BAR, "--text", stdout=subprocess.PIPE)
    assert process.stdout.readline() == "offline\n"
    looks = (folder / "answered").read_text()
    run(*kernel, "ip", "address", "add", "10.0.0.3/24", "dev", "eth0", check=True)
    state("COMPLETED")
    assert not select.select([process.stdout], [], [], 1)[0], "it has looked"
    assert (folder / "answered").read_text() == looks
    run(*kernel, "ip", "address", "add", "10.0.0.2/24", "dev", "wlan0", check=True)
    assert select.select([process.stdout], [], [], LIMIT)[0]
    assert process.stdout.readline() == "Cafe\n"


def test_the_script_for_i3status_ends_with_it(simulate, bar, folder, start):
    simulate("Home")
    (folder / ".cache").mkdir()
    put_script(folder / "bin/i3status", "#!/bin/sh\nexec sleep infinity\n")
    (folder / "bin/status-bar").symlink_to(BAR)
    [script] = re.findall(r"(?m)^    (#!/bin/sh\n(?:    .*\n)+)", README.read_text())
    put_script(folder / "with-wifi", script.replace("\n    ", "\n"))
    started = bar(script=folder / "with-wifi")
    wait_until("the file is written", lambda: (folder / ".cache/wifi").exists()
               and (folder / ".cache/wifi").read_text() == "offline\n")
    started.process.kill()
    wait_until("all processes have ended", lambda: started.processes() == {})


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
