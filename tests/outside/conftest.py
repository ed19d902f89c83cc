# SPDX-License-Identifier: MIT
"""What the tests of this folder share. After a build, `pytest tests/outside` runs them, too.

Variables say what to test: CORVANE_BUILD is the build folder (default: build/dev), CORVANE_WIFI and
CORVANE_SIMULATOR are the programs (default: those in the build folder).
"""
import contextlib
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("CORVANE_BUILD", ROOT / "build/dev")).resolve()
PROGRAM = pathlib.Path(os.environ.get("CORVANE_WIFI", BUILD / "corvane-wifi")).resolve()
SIMULATOR = pathlib.Path(os.environ.get("CORVANE_SIMULATOR", BUILD / "corvane-simulator")).resolve()
LIMIT = 60  # seconds, for what takes one


def wait_until(what, condition):
    end = time.monotonic() + LIMIT
    while not condition():
        assert time.monotonic() < end, f"waited {LIMIT} s in vain until {what}"
        time.sleep(0.02)


def require_tool(*names):
    for name in names:
        if not shutil.which(name):
            pytest.skip(f"needs {name}")


def processes(session):
    """What /proc tells of its living processes."""
    found = {}
    for path in pathlib.Path("/proc").glob("[0-9]*"):
        with contextlib.suppress(OSError):  # it has ended
            if os.getsid(int(path.name)) == session:
                found[path.name] = (path / "stat").read_text() + (path / "status").read_text()
    return {process: text for process, text in found.items() if "State:\tZ" not in text}


def manual_page():
    """As text, without the overprinting of bold and underlined letters."""
    require_tool("mandoc")
    command = ["mandoc", "-T", "ascii", "-O", "width=200", ROOT / "man/corvane-wifi.1"]
    return re.sub(".\b", "", subprocess.check_output(command, text=True, timeout=LIMIT))


def broken_links(documents):
    """What the links in these documents refer to, and is not there."""
    links = [(document.parent / link) for document in documents
             for link in re.findall(r"\]\(([^)#:]+)[)#]", document.read_text())]
    assert links
    return [str(link) for link in links if not link.exists()]


def profile(name, key="key_mgmt=NONE"):
    return f'network={{\n\tssid="{name}"\n\t{key}\n\tdisabled=1\n}}\n'


def put_script(path, text):
    path.unlink(missing_ok=True)  # not through a link to the program
    path.write_text(text)
    path.chmod(0o755)


@pytest.fixture
def folder():
    # Not pytest's own, which stay behind. A socket's path must be short.
    with tempfile.TemporaryDirectory(prefix="corvane-outside-", dir="/tmp") as path:
        yield pathlib.Path(path)


@pytest.fixture
def environment(folder):
    (folder / "bin").mkdir()
    (folder / "bin/corvane-wifi").symlink_to(PROGRAM)
    return {"PATH": f"{folder}/bin:{os.environ['PATH']}", "HOME": str(folder),
            "XDG_RUNTIME_DIR": str(folder), "TERM": "xterm", "LC_ALL": "C.UTF-8",
            "CORVANE_WPA_SOCKET": f"{folder}/wlan0", "CORVANE_WIFI_SCAN_DELAY_MS": "0",
            "CORVANE_WIFI_CONNECT_TIMEOUT_MS": "30000"}


@pytest.fixture
def run(folder, environment):
    """Runs a command to its end."""
    def run(*words, **options):
        defaults = {"env": environment, "cwd": folder, "text": True, "input": "",
                    "capture_output": True, "timeout": LIMIT}
        return subprocess.run(words, **defaults | options)
    return run


@pytest.fixture
def wifi(run):
    """What the program prints when it succeeds."""
    return lambda *words: run(PROGRAM, *words, check=True).stdout


@pytest.fixture
def start(folder, environment):
    """Starts a command that the test outlives."""
    processes = []

    def start(*words, **options):
        defaults = {"env": environment, "cwd": folder, "text": True, "start_new_session": True}
        processes.append(subprocess.Popen(words, **defaults | options))
        return processes[-1]

    yield start
    for process in reversed(processes):
        if process.poll() is None:  # or its id may be another's
            os.killpg(process.pid, signal.SIGKILL)  # also what it has started
        process.communicate(timeout=LIMIT)


@pytest.fixture
def simulate(folder, start):
    """Starts a simulator with these networks in range, or all."""
    def simulate(*names, profiles=""):
        configuration = folder / "wpa_supplicant.conf"
        configuration.write_text("update_config=1\n" + profiles)
        simulator = start(SIMULATOR, folder / "wlan0", configuration, *names)
        wait_until("the simulator has a socket or ends",
                   lambda: (folder / "wlan0").exists() or simulator.poll() is not None)
        assert simulator.poll() is None
        return simulator
    return simulate


@pytest.fixture
def terminal(folder, environment):
    """Starts a command in a terminal of its own, which the test outlives."""
    pexpect = pytest.importorskip("pexpect")
    children = []

    def terminal(*words, **variables):
        command, *arguments = map(str, words)
        child = pexpect.spawn(command, arguments, env=environment | variables, cwd=folder,
                              timeout=LIMIT, dimensions=(50, 150), encoding="utf-8",
                              codec_errors="replace")
        child.delaybeforesend = None
        children.append(child)
        return child

    yield terminal
    for child in children:
        child.close(force=True)


@pytest.fixture
def x11(environment, start):
    """Starts an X server, and types a line into the window that has the focus."""
    require_tool("Xvfb", "xdotool")
    server = start("Xvfb", "-displayfd", "1", "-screen", "0", "800x800x24", "-nolisten", "tcp",
                   "-noreset", stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    environment["DISPLAY"] = ":" + server.stdout.readline().strip()
    return lambda text: start("xdotool", "type", "--delay", "20", "--args", "1", text,
                              "sleep", "0.5", "key", "Return")
