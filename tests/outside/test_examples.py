#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Usage: tests/outside/test_examples.py PROGRAM SIMULATOR [OPTION OF UNITTEST...]
Runs examples/wifi-menu, with fakes of the programs for menus, and examples/status-bar against the
simulator. Needs jq, strace and util-linux.
"""
import json
import os
import pathlib
import pty
import select
import signal
import subprocess
import sys
import tempfile
import termios
import time
import unittest

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
PASSWORD = "home-password"
TOOLS = {  # their options for a list
    "fuzzel": ["--dmenu", "--prompt", "Wi-Fi "], "wofi": ["--dmenu", "--prompt", "Wi-Fi "],
    "rofi": ["-dmenu", "-i", "-p", "Wi-Fi "], "dmenu": ["-i", "-l", "15", "-p", "Wi-Fi "],
    "fzf": ["--layout", "reverse", "--no-sort", "--prompt", "Wi-Fi "],
    "whiptail": ["--title", "Wi-Fi", "--menu", "Wi-Fi", "0", "0", "0"],
}
QUESTIONS = {  # and for a password that is not shown
    "fuzzel": ["--dmenu", "--lines", "1", "--password", "--prompt", "Wi-Fi password: "],
    "wofi": ["--dmenu", "--lines", "1", "--password", "--prompt", "Wi-Fi password: "],
    "rofi": ["-dmenu", "-password", "-p", "Wi-Fi password: "],
    "dmenu": ["-nf", "#222", "-nb", "#222", "-p", "Wi-Fi password: "],
    "whiptail": ["--title", "Wi-Fi", "--passwordbox", "Wi-Fi password:", "8", "60"],
}
# Gives the next answer: a part of an entry, a password, or null to close the menu.
FAKE_TOOL = r'''#!/usr/bin/python3
import json, pathlib, sys
folder = pathlib.Path(__file__).parent.parent
[answer, *rest] = json.loads((folder / "answers").read_text())
(folder / "answers").write_text(json.dumps(rest))
words = sys.argv[1:]
whiptail = "whiptail" in sys.argv[0]
question = "password" in str(words)
if whiptail:
    entries = [f"{tag} {text}" for tag, text in zip(words[7::2], words[8::2])]
    words = words[:7]
else:
    entries = sys.stdin.read().splitlines()
with open(folder / "shown", "a") as shown:
    print(json.dumps([words, entries]), file=shown)
if answer is None:
    sys.exit(1)
if not question:
    answer = [*(entry for entry in entries if answer in entry), answer][0]
if whiptail:
    print(answer if question else answer.split(" ")[0], end="", file=sys.stderr)
else:
    print(answer)
'''


def profile(name, key="key_mgmt=NONE"):
    return f'network={{\n\tssid="{name}"\n\t{key}\n\tdisabled=1\n}}\n'


class Example(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        (self.folder / "bin").mkdir()
        (self.folder / "bin/corvane-wifi").symlink_to(PROGRAM)
        self.configuration = self.folder / "wpa_supplicant.conf"
        self.environment = {
            "PATH": f"{self.folder}/bin:/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8",
            "CORVANE_WPA_SOCKET": f"{self.folder}/wlan0", "CORVANE_WIFI_SCAN_DELAY_MS": "0",
            "CORVANE_WIFI_CONNECT_TIMEOUT_MS": "4000",
            "ASAN_OPTIONS": "detect_leaks=0"}  # which is impossible below strace

    def put(self, name, script):
        path = self.folder / "bin" / name
        path.unlink(missing_ok=True)  # not through the link to the program
        path.write_text(script)
        path.chmod(0o755)

    def simulate(self, *networks, profiles=""):
        self.configuration.write_text("update_config=1\n" + profiles)
        simulator = subprocess.Popen(
            [SIMULATOR, self.folder / "wlan0", self.configuration, *networks])
        self.addCleanup(simulator.wait)
        self.addCleanup(simulator.terminate)
        while not (self.folder / "wlan0").exists():
            time.sleep(0.01)
        return simulator

    def wifi(self, *words):
        return subprocess.check_output([PROGRAM, *words], env=self.environment, encoding="utf-8")


class Menu(Example):
    def setUp(self):
        super().setUp()
        self.screen, self.terminal = pty.openpty()
        self.addCleanup(os.close, self.screen)
        self.addCleanup(os.close, self.terminal)

    def start(self, tool, *answers, tracer=()):
        self.put(tool, FAKE_TOOL)
        (self.folder / "answers").write_text(json.dumps(answers))
        (self.folder / "shown").write_text("")
        process = subprocess.Popen(
            [*tracer, EXAMPLES / "wifi-menu"], env=self.environment | {"WIFI_MENU": tool},
            stdin=self.terminal, stdout=self.terminal, stderr=self.terminal,
            start_new_session=True)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def shown(self):
        return list(map(json.loads, (self.folder / "shown").read_text().splitlines()))

    def choose(self, *answers, tool="rofi"):
        """The status, and the entries of each menu."""
        status = self.start(tool, *answers).wait(60)
        self.assertEqual((self.folder / "answers").read_text(), "[]", "answers that are left over")
        return status, [entries for _, entries in self.shown()]

    def type_at_question(self, keys):
        """The screen up to there. Keys that are not shown are typed once echo is off."""
        shown = b""
        while b"Wi-Fi password: " not in shown:
            self.assertTrue(select.select([self.screen], [], [], 30)[0], shown)
            shown += os.read(self.screen, 4096)
        self.assertFalse(self.echoes())
        os.write(self.screen, keys)

    def echoes(self):
        return termios.tcgetattr(self.terminal)[3] & termios.ECHO != 0

    def test_asks_for_a_password_that_is_in_no_argument_and_no_environment(self):
        trace = self.folder / "trace"
        tracer = ["strace", "-f", "-v", "-s9999", "-etrace=execve", "-o", trace]
        for tool in TOOLS:
            simulator = self.simulate("Home")
            passwords = [] if tool == "fzf" else [PASSWORD]
            process = self.start(tool, "Home", *passwords, tracer=tracer)
            if tool == "fzf":
                self.type_at_question(PASSWORD.encode() + b"\n")
            self.assertEqual(process.wait(60), 0, tool)
            [[options, [entry, *_]], *questions] = self.shown()
            self.assertEqual(options, TOOLS[tool])
            self.assertRegex(entry, r"^1 Home  \[WPA personal, -\d\d dBm\]$")
            self.assertEqual(questions, [] if tool == "fzf" else [[QUESTIONS[tool], []]])
            self.assertIn(f'psk="{PASSWORD}"', self.configuration.read_text())
            self.assertIn('"--password-stdin", "Home"', trace.read_text())
            self.assertNotIn(PASSWORD, trace.read_text())
            simulator.terminate()
            simulator.wait()
        self.assertTrue(self.echoes())
        self.assertFalse(select.select([self.screen], [], [], 0)[0] and
                         PASSWORD.encode() in os.read(self.screen, 65536))

    def test_turns_echo_on_again_when_interrupted(self):
        self.simulate("Home")
        process = self.start("fzf", "Home")
        self.type_at_question(b"half a pass")
        while process.poll() is None:  # the first may come before anything reads
            os.killpg(process.pid, signal.SIGINT)
            time.sleep(0.1)
        self.assertTrue(self.echoes())
        self.assertNotIn("psk", self.configuration.read_text())

    def test_connects_to_saved_and_open_networks_without_a_question(self):
        bob = 'Bob "5G" C:\\net'
        self.simulate(bob, "Cafe", profiles=profile(bob, 'psk="bob-password"'))
        for name, shown in ((r'Bob \"5G\" C:\\net', "saved]"), ("Cafe", "[open")):
            status, [entries] = self.choose(name)
            self.assertEqual(status, 0)
            [entry] = [entry for entry in entries if name in entry]
            self.assertIn(shown, entry)
            self.assertEqual(json.loads(self.wifi("status", "--json"))["ssid"], name)

    def test_forgets_exactly_the_chosen_name_and_only_after_a_question(self):
        names = ("  two  blanks ", "It's $5 & `x`!", 'say "so" \\', "caf\u00e9 *", "plain")
        self.simulate("none", profiles="".join(map(profile, names)))
        for tool in ("rofi", "whiptail"):
            _, [_, entries, _] = self.choose("f Forget", "plain", "no Keep plain", tool=tool)
            self.assertEqual(len(entries), len(names))
        for part in ("two", "$5", "say", "caf", "plain"):
            saved = len(json.loads(self.wifi("list", "--json")))
            status, _ = self.choose("f Forget", part, "yes Forget")
            self.assertEqual(status, 0)
            left = self.wifi("list", "--json")
            self.assertNotIn(part, left)
            self.assertEqual(len(json.loads(left)), saved - 1)

    def test_disconnects(self):
        self.simulate("Cafe")
        self.choose("Cafe")
        status, [[first, *_]] = self.choose("d Disconnect")
        self.assertEqual(status, 0)
        self.assertRegex(first, r"^1 \* Cafe  \[open, -\d\d dBm, saved\]$")
        self.assertIn("DISCONNECTED", self.wifi("status"))

    def test_scans_again(self):
        self.simulate("Cafe")
        status, menus = self.choose("r Scan", "Cafe")
        self.assertEqual((status, len(menus)), (0, 2))

    def test_of_an_empty_list_still_scans_and_forgets(self):
        self.simulate("none")
        status, [entries] = self.choose(None)
        self.assertEqual(status, 0)
        self.assertEqual(entries, ["r Scan again", "d Disconnect", "f Forget"])

    def test_does_nothing_where_a_menu_is_closed_or_no_entry_is_chosen(self):
        self.simulate("Home", profiles=profile("Old"))
        def state():  # but for the word that says whether a scan is under way
            return self.configuration.read_text(), self.wifi("status").splitlines()[1:]
        before = state()
        for answers in ([None], ["nonsense"], ["99"], ["0"], ["f Forget", None],
                        ["f Forget", "nonsense"], ["f Forget", "Old", None], ["Home", None]):
            self.assertEqual(self.choose(*answers)[0], 0, answers)
        self.assertEqual(state(), before)

    def test_tells_failures_in_the_menu(self):
        self.simulate("Home", "Office")
        for answers, message in (
                (["Home", "wrong-password"], "Timed out connecting to Home."),
                (["Home", "short"], "A WPA password must contain 8 to 63 UTF-8 bytes."),
                (["Office"], "That network uses an unsupported security mode.")):
            for tool in ("rofi", "whiptail"):
                status, menus = self.choose(*answers, None, tool=tool)
                self.assertEqual((status, menus[-1]), (1, ["! " + message]))
        self.assertNotIn("network", self.configuration.read_text())

    def test_tells_that_the_socket_is_dead(self):
        simulator = self.simulate("Home")
        simulator.kill()
        simulator.wait()
        status, [entries] = self.choose(None)
        self.assertEqual(status, 1)
        self.assertEqual(entries, ["! Could not connect to wpa_supplicant: Connection refused"])

    def test_takes_the_first_program_that_fits_the_session(self):
        self.simulate("Home")
        for tool in TOOLS:
            self.put(tool, f"#!/bin/sh\necho {tool} >>'{self.folder}/taken'\n")
        for session in ({"WAYLAND_DISPLAY": "w"}, {"DISPLAY": ":0"}, {}):
            subprocess.run([EXAMPLES / "wifi-menu"], env=self.environment | session, check=True)
        self.assertEqual((self.folder / "taken").read_text(), "fuzzel\nrofi\nfzf\n")

    def test_refuses_arguments_and_menus_that_it_does_not_know(self):
        self.put("bemenu", "#!/bin/sh\n")
        for script, word, menu, status, error in (
                ("wifi-menu", "--help", "", 0, ""), ("status-bar", "--help", "", 0, ""),
                ("wifi-menu", "x", "", 2, ""), ("status-bar", "x", "", 2, ""),
                ("wifi-menu", None, "bemenu", 1, "wifi-menu: cannot use bemenu\n"),
                ("wifi-menu", None, "missing", 1, "wifi-menu: cannot use missing\n")):
            ran = subprocess.run([EXAMPLES / script, *filter(None, [word])], text=True,
                                 env=self.environment | {"WIFI_MENU": menu}, capture_output=True)
            self.assertEqual((ran.returncode, ran.stderr), (status, error), script)
            self.assertEqual(ran.stdout.startswith("Usage:"), word is not None)


class StatusBar(Example):
    def setUp(self):
        super().setUp()
        os.mkfifo(self.folder / "events")
        self.put("ip", f"#!/bin/sh\necho \"$*\" >'{self.folder}/asked'\nexec cat '{self.folder}/events'\n")

    def start(self, *words):
        self.bar = subprocess.Popen(
            [EXAMPLES / "status-bar", *words], env=self.environment, stdout=subprocess.PIPE,
            encoding="utf-8", start_new_session=True)
        self.addCleanup(self.bar.stdout.close)
        self.addCleanup(self.bar.wait)
        self.events = open(self.folder / "events", "w")
        self.addCleanup(self.events.close)
        self.addCleanup(self.bar.terminate)

    def event(self):
        print("2: wlan0: <BROADCAST,MULTICAST,UP,LOWER_UP>", file=self.events, flush=True)

    def line(self, timeout=30):
        if not select.select([self.bar.stdout], [], [], timeout)[0]:
            return None
        return self.bar.stdout.readline()

    def processes(self):
        """Of the bar: how often each was given a processor."""
        switches = {}
        for path in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if os.getpgid(int(path.name)) == self.bar.pid:
                    facts = (path / "status").read_text()
                    switches[path.name] = [line for line in facts.splitlines() if "ctxt" in line]
            except OSError:
                pass
        return switches

    def test_shows_each_change_once_and_sleeps_meanwhile(self):
        bob = r'Bob \"5G\" C:\\net'
        self.simulate('Bob "5G" C:\\net', profiles=profile('Bob "5G" C:\\net', 'psk="bob-password"'))
        self.start()
        self.assertEqual(json.loads(self.line()),
                         {"text": "offline", "tooltip": "INACTIVE", "class": "disconnected"})
        self.assertEqual((self.folder / "asked").read_text(), "-o monitor link address\n")
        time.sleep(1)  # until it waits for events
        before = self.processes()
        self.assertIsNone(self.line(timeout=1))
        self.assertEqual(self.processes(), before)
        self.event()
        self.assertIsNone(self.line(timeout=1))
        self.wifi("connect", bob)
        time.sleep(0.5)  # for the address
        self.event()
        self.assertEqual(json.loads(self.line()),
                         {"text": bob.replace('"', "&quot;"), "tooltip": "10.66.2.48",
                          "class": "connected"})

    def test_shows_a_connection_on_its_way(self):
        self.put("corvane-wifi", """#!/bin/sh
            echo '{"state":"4WAY_HANDSHAKE","ssid":"<b>","address":"","saved_id":0}'\n""")
        self.start()
        self.assertEqual(json.loads(self.line())["class"], "connecting")

    def test_is_plain_text_on_request(self):
        self.simulate("Cafe")
        self.wifi("list")
        self.wifi("connect", "--open", "Cafe")
        self.start("--text")
        self.assertEqual(self.line(), "Cafe\n")

    def test_shows_that_the_socket_is_dead_and_recovers(self):
        self.simulate("Home").terminate()
        while (self.folder / "wlan0").exists():
            time.sleep(0.01)
        self.start()
        self.assertEqual(json.loads(self.line()), {
            "text": "no Wi-Fi", "class": "failed",
            "tooltip": "Could not connect to wpa_supplicant: No such file or directory"})
        self.simulate("Home")
        self.event()
        self.assertEqual(json.loads(self.line())["class"], "disconnected")

    def test_leaves_no_process_behind(self):
        self.simulate("Home")
        self.start("--text")
        self.assertEqual(self.line(), "offline\n")
        self.assertGreater(len(self.processes()), 1)
        self.bar.terminate()
        self.bar.wait()
        deadline = time.monotonic() + 10
        while self.processes() and time.monotonic() < deadline:
            time.sleep(0.05)
        self.assertEqual(self.processes(), {})


if sys.argv[1:] == ["--help"]:
    print(__doc__, end="")
elif len(sys.argv) < 3:
    print("tests/outside/test_examples.py: two arguments are needed, see --help", file=sys.stderr)
    sys.exit(2)
else:
    PROGRAM, SIMULATOR, *options = sys.argv[1:]
    unittest.main(argv=sys.argv[:1] + options)
