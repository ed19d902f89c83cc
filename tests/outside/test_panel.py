# SPDX-License-Identifier: MIT
"""Proves that the installed panel works in a real X session: pointer, signals, a second start."""
import json
import pathlib
import signal
import subprocess
import time

import pytest

from conftest import BUILD, LIMIT, PROGRAM, require_tool, wait_until

PANEL = BUILD / "panel/corvane-wifi-panel"


@pytest.fixture
def panel(x11, environment, start, run):
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


def click_first_row(run):
    run("xdotool", "mousemove", "150", "150", "click", "1", check=True)


def status(run):
    return json.loads(run(PROGRAM, "status", "--json").stdout)


def saved(folder):
    return (folder / "wpa_supplicant.conf").read_text()


def click_until(what, run, condition):
    """Rows come after the window; a scan comes right after the first of them."""
    time.sleep(1)
    wait_until("the window is on the screen", lambda: windows(run))
    wait_until(what, lambda: click_first_row(run) or condition())


def begin_to_join(run):
    click_until("a click on the row has begun to join", run,
                lambda: status(run)["state"] != "INACTIVE")


def test_pointer_joins_a_network(simulate, panel, run, folder):
    simulate("Cafe")
    panel()
    click_until("a click on the row has joined", run,
                lambda: status(run)["state"] == "COMPLETED")
    wait_until("the network is saved", lambda: 'ssid="Cafe"' in saved(folder))


@pytest.mark.parametrize("ending", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
def test_signal_ends_it_when_the_attempt_is_over(simulate, panel, run, folder, ending):
    simulate("Cafe")
    process = panel()
    begin_to_join(run)
    process.send_signal(ending)
    wait_until("the window is gone", lambda: not windows(run))
    assert process.wait(LIMIT) == 0
    assert 'ssid="Cafe"' in saved(folder) and "disabled" not in saved(folder)
    assert not list(pathlib.Path("/tmp").glob(f"corvane-wpa-{process.pid}-*"))


def test_second_start_shows_the_first(simulate, panel, run, start):
    simulate("Cafe")
    process = panel()
    begin_to_join(run)
    process.terminate()
    wait_until("the window is gone", lambda: not windows(run))
    assert start(PANEL).wait(LIMIT) == 0
    wait_until("the window is back", lambda: len(windows(run)) == 1)
    wait_until("it has joined", lambda: status(run)["state"] == "COMPLETED")
    time.sleep(1)
    assert process.poll() is None


def test_second_start_after_a_crash_is_a_first(simulate, panel, run):
    simulate("Cafe")
    process = panel()
    process.kill()
    process.wait(LIMIT)
    wait_until("the window is gone", lambda: not windows(run))
    assert panel().poll() is None
    assert len(windows(run)) == 1


def test_second_start_while_the_first_ends_is_a_first(simulate, panel, run):
    simulator = simulate("Cafe")
    process = panel()
    simulator.send_signal(signal.SIGSTOP)
    time.sleep(6)  # it waits for a reply that does not come
    process.terminate()
    wait_until("the window is gone", lambda: not windows(run))
    assert panel().poll() is None
    assert len(windows(run)) == 1


def test_idle_window_asks_for_little(simulate, panel, folder):
    """In 12 s at most three looks (STATUS), and no scan: these come every 5 s and every 30 s."""
    require_tool("strace")
    simulate("Cafe")
    process = panel()
    time.sleep(8)  # the first look, the first scan, and a look after it
    trace = folder / "trace"
    tracer = subprocess.Popen(["strace", "-f", "-q", "-p", str(process.pid), "-o", str(trace)])
    time.sleep(12)
    tracer.terminate()
    tracer.wait(LIMIT)
    sent = [line for line in trace.read_text().splitlines() if "sendto(" in line]
    requests = [line for line in sent if "STATUS" in line or "SCAN" in line]
    assert 1 <= len(requests) <= 3 and all('"STATUS"' in line for line in requests)
    print(len(trace.read_text().splitlines()), "system calls in 12 s")
