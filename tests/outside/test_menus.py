# SPDX-License-Identifier: MIT
"""Proves that wifi-menu understands the real menus for X11 and Wayland, and that they forget."""
import contextlib
import json
import os
import subprocess

import pytest

from conftest import LIMIT, ROOT, processes, require_tool, wait_until

MENU = ROOT / "examples/wifi-menu"
PASSWORD = "home-password"
MENUS = [("x11", "rofi"), ("x11", "dmenu"), ("x11", "bemenu"),
         ("wayland", "fuzzel"), ("wayland", "wofi"), ("wayland", "bemenu")]


@pytest.fixture
def wayland(folder, environment, start):
    if "CORVANE_WAYLAND" not in os.environ:
        pytest.skip("release/menus runs it: compositors do not bear a busy machine")
    require_tool("sway", "wtype")
    (folder / "sway").write_text("xwayland disable\nexec echo $WAYLAND_DISPLAY >display\n")
    environment |= {"WLR_BACKENDS": "headless", "WLR_LIBINPUT_NO_DEVICES": "1",
                    "WLR_RENDERER": "pixman",
                    # GTK would wait for a session bus and look ready.
                    "NO_AT_BRIDGE": "1", "GSETTINGS_BACKEND": "memory"}
    # It refuses to run as root.
    user = ["unshare", "--map-user", "1000", "--map-group", "1000"] if os.getuid() == 0 else []
    start(*user, "sway", "-c", folder / "sway", stderr=subprocess.DEVNULL)
    display = folder / "display"
    wait_until("sway is ready", lambda: display.exists() and display.read_text().endswith("\n"))
    environment["WAYLAND_DISPLAY"] = display.read_text().strip()

    def type_line(*words):  # and keep the keyboard: some menus fail when the last one is removed
        start("wtype", *words, "-s", "600000")

    type_line()
    return lambda text: type_line("-d", "20", text, "-s", "500", "-k", "Return")


@pytest.fixture
def answer(request, environment, start):
    """Starts wifi-menu with a real menu, and types answers into it: gives the exit status."""
    display, tool = request.param
    require_tool("jq", tool)
    environment["WIFI_MENU"] = tool
    type_line = request.getfixturevalue(display)

    def menu(session):
        """The process of the menu, and its processor time in hundredths of a second."""
        return next(((process, text.split()[13:15]) for process, text in processes(session).items()
                     if f"({tool})" in text), None)

    def answer(*answers):
        process = start(MENU)
        answered = set()

        def waits():
            before = menu(process.pid)
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(1)
            return process.poll() is not None or (
                before and before[0] not in answered and menu(process.pid) == before)

        for text in answers:
            wait_until(f"{tool} waits for {text!r}", waits)
            assert process.poll() is None, f"nobody asked for {text!r}"
            answered.add(menu(process.pid)[0])
            type_line(text)
        return process.wait(LIMIT)

    return answer


@pytest.mark.parametrize("answer", MENUS, indirect=True, ids="-".join)
def test_menu_joins_what_is_chosen_not_typed_and_keeps_the_password_nowhere(
        simulate, wifi, answer, folder):
    simulate("Home", "Cafe")
    assert answer("Home", PASSWORD) == 0
    assert answer("d link") == 0
    status = json.loads(wifi("status", "--json"))
    assert (status["state"], status["ssid"]) == ("COMPLETED", "Home")
    files = {path for path in folder.rglob("*") if path.is_file()}
    keepers = [path.name for path in files if PASSWORD.encode() in path.read_bytes()]
    assert keepers == ["wpa_supplicant.conf"]
