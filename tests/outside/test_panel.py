# SPDX-License-Identifier: MIT
"""Proves that the installed panel works in a real X session: pointer, signals, a second start."""
import json
import pathlib
import re
import signal
import time

import pytest

from conftest import BUILD, LIMIT, PROGRAM, require_tool, wait_until

PANEL = BUILD / "panel/corvane-wifi-panel"


@pytest.fixture
def simulator(simulate):
    return simulate("Cafe")


@pytest.fixture
def panel(simulator, x11, environment, start, run):
    """Starts the panel and returns when it has a window, or has ended."""
    if not PANEL.exists():
        pytest.skip("needs CORVANE_BUILD_PANEL")
    environment["QT_QUICK_BACKEND"] = "software"

    def panel():
        process = start(PANEL)
        wait_until("the panel has a window", lambda: process.poll() is not None or windows(run))
        return process
    return panel


def windows(run):
    return run("xdotool", "search", "--onlyvisible", "--name", "^Wi-Fi$").stdout.split()


def wait_until_gone(run):
    wait_until("the window is gone", lambda: not windows(run))


def state(run):
    return json.loads(run(PROGRAM, "status", "--json").stdout)["state"]


def begin_to_join(run):
    """Rows come after the window; a scan comes right after the first of them."""
    def has_begun():
        run("xdotool", "mousemove", "150", "150", "click", "1", check=True)
        return state(run) != "INACTIVE"
    time.sleep(1)
    wait_until("a click on the row has begun to join", has_begun)


def saved(folder):
    return (folder / "wpa_supplicant.conf").read_text()


def test_pointer_joins_a_network(panel, run, folder):
    panel()
    begin_to_join(run)
    wait_until("it has joined", lambda: state(run) == "COMPLETED")
    wait_until("the network is saved", lambda: 'ssid="Cafe"' in saved(folder))


@pytest.mark.parametrize("ending", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
def test_signal_ends_it_when_the_attempt_is_over(panel, run, folder, ending):
    process = panel()
    begin_to_join(run)
    process.send_signal(ending)
    wait_until_gone(run)
    assert process.wait(LIMIT) == 0
    assert 'ssid="Cafe"' in saved(folder) and "disabled" not in saved(folder)
    assert not list(pathlib.Path("/tmp").glob(f"corvane-wpa-{process.pid}-*"))


def test_second_start_shows_the_first(panel, run, start):
    process = panel()
    begin_to_join(run)
    process.terminate()
    wait_until_gone(run)
    assert start(PANEL).wait(LIMIT) == 0
    wait_until("the window is back", lambda: len(windows(run)) == 1)
    wait_until("it has joined", lambda: state(run) == "COMPLETED")
    time.sleep(1)
    assert process.poll() is None


def test_second_start_after_a_crash_is_a_first(panel, run):
    process = panel()
    process.kill()
    process.wait(LIMIT)
    wait_until_gone(run)
    assert panel().poll() is None
    assert len(windows(run)) == 1


def test_second_start_while_the_first_ends_is_a_first(simulator, panel, run):
    process = panel()
    simulator.send_signal(signal.SIGSTOP)
    time.sleep(6)  # it waits for a reply that does not come
    process.terminate()
    wait_until_gone(run)
    assert panel().poll() is None
    assert len(windows(run)) == 1


def test_idle_window_asks_for_little(panel, run, folder):
    """In 12 s at most three looks (STATUS), and no scan: these come every 5 s and every 30 s."""
    require_tool("strace")
    process = panel()
    time.sleep(8)  # the first look, the first scan, and a look after it
    trace = folder / "trace"
    run("timeout", "12", "strace", "-f", "-q", "-p", str(process.pid), "-o", trace)
    requests = re.findall(r'sendto\(.*"(STATUS|SCAN)', trace.read_text())
    assert 1 <= len(requests) <= 3 and set(requests) == {"STATUS"}
    print(len(trace.read_text().splitlines()), "system calls in 12 s")
