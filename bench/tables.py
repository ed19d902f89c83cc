# SPDX-License-Identifier: MIT
# Copyright (c) The corvane-wifi authors
"""Measures what scripts/bench has built and prints the tables."""

import json
import os
import pathlib
import re
import shlex
import shutil
import socketserver
import statistics
import subprocess
import sys
import tempfile
import threading

RUNS, ROUNDS = int(sys.argv[1]), 10
BUILD = pathlib.Path("build").resolve()
WORK = pathlib.Path(tempfile.mkdtemp(prefix="corvane-bench.", dir="/tmp"))
# As long as wpa_supplicant's can be.
REPLIES = {
    b"STATUS": "bssid=02:00:00:00:01:00\nfreq=2437\nssid=Café\nid=0\nmode=station\n"
               "pairwise_cipher=CCMP\ngroup_cipher=CCMP\nkey_mgmt=WPA2-PSK\n"
               "wpa_state=COMPLETED\nip_address=10.0.0.7\naddress=02:00:00:00:00:00\nuuid=0\n",
    b"SCAN_RESULTS": "bssid / frequency / signal level / flags / ssid\n" + "".join(
        f"02:00:00:00:{i:02x}:00\t{2412 + 5 * (i % 13)}\t-{40 + i % 50}\t[WPA2-PSK-CCMP][ESS]\t"
        f"Network {i}\n" for i in range(67)),
    b"LIST_NETWORKS": "network id / ssid / bssid / flags\n0\tNetwork 0\tany\t[CURRENT]\n"
                      "1\tNetwork 1\tany\t[DISABLED]\n"}
# Every program reads its whole environment at start: this is the one of a login by ssh.
LOGIN = {"CORVANE_WPA_SOCKET": f"{WORK}/wlan0", "HOME": "/root", "LOGNAME": "root",
         "MAIL": "/var/mail/root", "PATH": os.environ["PATH"], "PWD": "/root",
         "SHELL": "/bin/bash", "SHLVL": "1", "SSH_CLIENT": "192.168.1.20 50000 22",
         "SSH_CONNECTION": "192.168.1.20 50000 192.168.1.30 22", "SSH_TTY": "/dev/pts/0",
         "TERM": "xterm-256color", "USER": "root", "XDG_RUNTIME_DIR": "/run/user/0",
         "XDG_SESSION_CLASS": "user", "XDG_SESSION_ID": "1", "XDG_SESSION_TYPE": "tty"}


class Supplicant(socketserver.DatagramRequestHandler):
    def handle(self):
        self.wfile.write(REPLIES.get(self.rfile.read(), "OK\n").encode())


def run(*command, env):
    return subprocess.run(command, env=env, check=True, text=True, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE)


def times(commands, env):
    """CPU time of each command in ms. The commands take turns, so a busy moment of the
    machine does not hit one of them alone."""
    rounds = []
    for _ in range(ROUNDS):
        run("hyperfine", "--shell=none", "--warmup=5", f"--runs={RUNS // ROUNDS}", "--style=none",
            f"--export-json={WORK}/times", *map(shlex.join, commands), env=env)
        rounds.append(json.loads((WORK / "times").read_text())["results"])
    return [1000 * statistics.mean(result["user"] + result["system"] for result in results)
            for results in zip(*rounds)]


def instructions(command, env):
    options = "--tool=callgrind", "--callgrind-out-file=/dev/null"
    report = run("valgrind", *options, *command, env=env).stderr
    return int(re.search(r"Collected : (\d+)", report)[1])


def peak_memory(command, env):
    runs = [run("time", "-f", "%M", *command, env=env).stderr for _ in range(25)]
    return statistics.median(int(text.split()[-1]) for text in runs)


def system_calls(command, env):
    return int(run("strace", "-fc", *command, env=env).stderr.splitlines()[-1].split()[3])


def print_table(title, programs, env):
    """Programs are rows of a name and the commands it stands for, whose costs are added. Ratios are
    to the first program."""
    print(f"\n{title}\n\n| program | CPU, ms | ratio | instructions, 1000 | ratio "
          "| memory, KB | ratio | system calls | size, KB |\n" + "|---" * 9 + "|")
    timings = iter(times([command for _, *commands in programs for command in commands], env))
    base = None
    for name, *commands in programs:
        figures = (sum(next(timings) for _ in commands),
                   sum(instructions(command, env) for command in commands) / 1000,
                   max(peak_memory(command, env) for command in commands))
        base = base or figures
        cells = [f"{figure:.{digits}f} | {figure / first:.2f}"
                 for figure, first, digits in zip(figures, base, (2, 0, 0))]
        calls = sum(system_calls(command, env) for command in commands)
        size = os.path.getsize(commands[0][0]) // 1000
        print(f"| {name} | {' | '.join(cells)} | {calls} | {size} |", flush=True)


def fresh(program):
    """A copy: how a file came into memory changes the cost of starting it, so all are copied."""
    return shutil.copy(program, WORK)


def print_process_tables():
    static = fresh(BUILD / f"corvane-wifi-{os.uname().machine}")
    normal = fresh(BUILD / "release/corvane-wifi")
    bare = [fresh(BUILD / "release/bench/exchange"), f"{WORK}/wlan0"]
    wpa_cli = [fresh(shutil.which("wpa_cli", path="/usr/sbin")), "-p", str(WORK), "-i", "wlan0"]
    status = [("wpa_cli status", [*wpa_cli, "status"]),
              ("static binary", [static, "status"]),
              ("static binary, JSON", [static, "status", "--json"]),
              ("normal build", [normal, "status"]),
              ("bare exchange", [*bare, "STATUS"]),
              ("empty Qt program", [fresh(BUILD / "release/bench/empty-application")])]
    requests = "scan_results", "list_networks", "status"
    listing = [("wpa_cli, three calls", *([*wpa_cli, request] for request in requests)),
               ("static binary", [static, "list", "--cached", "--json"]),
               ("static binary, text", [static, "list", "--cached"]),
               ("normal build", [normal, "list", "--cached", "--json"]),
               ("bare exchange", [*bare, *map(str.upper, requests)])]
    for locale, setting in ("LANG unset", {}), ("LANG=C.UTF-8", {"LANG": "C.UTF-8"}):
        print_table(f"status, {locale}", status, LOGIN | setting)
        print_table(f"list --cached --json, {locale}", listing, LOGIN | setting)


try:
    server = socketserver.UnixDatagramServer(f"{WORK}/wlan0", Supplicant)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    print_process_tables()
except subprocess.CalledProcessError as error:
    sys.exit(error.stderr or error)
finally:
    shutil.rmtree(WORK)
