# SPDX-License-Identifier: MIT
# Copyright (c) The corvane-wifi authors
"""Measures what scripts/bench has built and prints the tables."""

import json, os, pathlib, re, shlex, shutil, statistics, subprocess, sys, tempfile, time

RUNS, ROUNDS = int(sys.argv[1]), 10
BUILD, PEERS, ARM_ROOT = (pathlib.Path("build", name).resolve()
                          for name in ("", "bench-peers", "bench-arm64"))
WORK = pathlib.Path(tempfile.mkdtemp(prefix="corvane-bench.", dir="/tmp"))
# Every program reads its whole environment at start: this is the one of a login by ssh.
LOGIN = {"CORVANE_WPA_SOCKET": f"{WORK}/wlan0", "HOME": "/root", "LOGNAME": "root",
         "MAIL": "/var/mail/root", "PATH": os.environ["PATH"], "PWD": "/root",
         "SHELL": "/bin/bash", "SHLVL": "1", "SSH_CLIENT": "192.168.1.20 50000 22",
         "SSH_CONNECTION": "192.168.1.20 50000 192.168.1.30 22", "SSH_TTY": "/dev/pts/0",
         "TERM": "xterm-256color", "USER": "root", "XDG_RUNTIME_DIR": "/run/user/0",
         "XDG_SESSION_CLASS": "user", "XDG_SESSION_ID": "1", "XDG_SESSION_TYPE": "tty"}


def run(*command, env, stdout=subprocess.DEVNULL):
    return subprocess.run(command, env=env, check=True, text=True, stdout=stdout,
                          stderr=subprocess.PIPE)


def times(commands, env):
    """CPU and wall time of each command in ms. The commands take turns, so a busy moment of the
    machine does not hit one of them alone."""
    rounds = []
    for _ in range(ROUNDS):
        run("hyperfine", "--shell=none", "--warmup=5", f"--runs={RUNS // ROUNDS}", "--style=none",
            f"--export-json={WORK}/times", *map(shlex.join, commands), env=env)
        rounds.append(json.loads((WORK / "times").read_text())["results"])
    return [(statistics.mean(result["user"] + result["system"] for result in results) * 1000,
             statistics.mean(result["mean"] for result in results) * 1000)
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


def print_header(title, *columns):
    print(f"\n{title}\n\n| {' | '.join(columns)} |\n" + "|---" * len(columns) + "|")


def print_table(title, programs, env):
    """Programs are rows of a name and the commands it stands for, whose costs are added. Ratios are
    to the first program."""
    print_header(title, "program", "CPU, ms", "ratio", "wall, ms", "ratio", "instructions, 1000",
                 "ratio", "memory, KB", "ratio", "system calls", "size, KB")
    timings = iter(times([command for _, *commands in programs for command in commands], env))
    base = None
    for name, *commands in programs:
        cpu, wall = map(sum, zip(*(next(timings) for _ in commands)))
        figures = (cpu, wall, sum(instructions(command, env) for command in commands) / 1000,
                   max(peak_memory(command, env) for command in commands))
        base = base or figures
        cells = [f"{figure:.{digits}f} | {figure / first:.2f}"
                 for figure, first, digits in zip(figures, base, (2, 2, 0, 0))]
        calls = sum(system_calls(command, env) for command in commands)
        size = os.path.getsize(commands[0][0]) // 1000
        print(f"| {name} | {' | '.join(cells)} | {calls} | {size} |", flush=True)


def fresh(program):
    """A copy: how a file came into memory changes the cost of starting it, so all are copied."""
    return shutil.copy(program, WORK)


def print_native_tables():
    single = fresh(BUILD / f"corvane-wifi-{os.uname().machine}")
    normal = fresh(BUILD / "release/corvane-wifi")
    exchange = fresh(BUILD / "exchange")
    wpa_cli = [fresh(PEERS / "usr/sbin/wpa_cli"), "-p", str(WORK), "-i", "wlan0"]
    status = [("wpa_cli status", [*wpa_cli, "status"]),
              ("single file", [single, "status"]),
              ("single file, JSON", [single, "status", "--json"]),
              ("normal build", [normal, "status"]),
              ("bare C", [exchange, f"{WORK}/wlan0", "STATUS"]),
              ("empty Qt program", [fresh(BUILD / "release/bench/empty-application")]),
              ("nmcli --version", [fresh(PEERS / "usr/bin/nmcli"), "--version"])]
    requests = "scan_results", "list_networks", "status"
    listing = [("wpa_cli, three calls", *([*wpa_cli, request] for request in requests)),
               ("single file", [single, "list", "--cached", "--json"]),
               ("single file, text", [single, "list", "--cached"]),
               ("normal build", [normal, "list", "--cached", "--json"]),
               ("bare C", [exchange, f"{WORK}/wlan0", *map(str.upper, requests)])]
    for locale, setting in ("LANG unset", {}), ("LANG=C.UTF-8", {"LANG": "C.UTF-8"}):
        print_table(f"status, {locale}", status, LOGIN | setting)
        print_table(f"list --cached --json, {locale}", listing, LOGIN | setting)


def arm_instructions(*command):
    """With -singlestep, qemu logs one line for each instruction."""
    emulator = ["qemu-aarch64-static", "-L", ARM_ROOT, "-singlestep", "-d", "nochain,exec"]
    with subprocess.Popen([*emulator, *command], env=LOGIN, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE) as process:
        return sum(line.startswith(b"Trace") for line in process.stderr)


def print_arm_table():
    wpa_cli = [ARM_ROOT / "usr/sbin/wpa_cli", "-p", WORK, "-i", "wlan0"]
    single = BUILD / "corvane-wifi-aarch64"
    peer_status = arm_instructions(*wpa_cli, "status")
    peer_list = peer_status + sum(arm_instructions(*wpa_cli, request)
                                  for request in ("scan_results", "list_networks"))
    print_header("Instructions on aarch64", "program", "instructions, 1000", "ratio")

    def print_row(name, count, base):
        print(f"| {name} | {count / 1000:.0f} | {count / base:.2f} |")

    print_row("wpa_cli status", peer_status, peer_status)
    for arguments in ["status"], ["status", "--json"]:
        print_row("single file, " + " ".join(arguments),
                  arm_instructions(single, *arguments), peer_status)
    print_row("wpa_cli, three calls", peer_list, peer_list)
    print_row("single file, list --cached --json",
              arm_instructions(single, "list", "--cached", "--json"), peer_list)


def print_in_process_table():
    report = run(BUILD / "release/bench/wifi-bench", "--benchmark_repetitions=9",
                 "--benchmark_format=json", "--benchmark_enable_random_interleaving=true",
                 "--benchmark_min_time=0.1", env=LOGIN, stdout=subprocess.PIPE).stdout
    # Wall time of what exchanges datagrams, CPU time of the rest.
    print_header("Within a process, medians of 9", "function", "time, us", "user time, us")
    for row in json.loads(report)["benchmarks"]:
        if row.get("aggregate_name") == "median":
            name, _, exchanges = row["run_name"].partition("/")
            time_ns = row["real_time" if exchanges else "cpu_time"]
            user = f"{row['user_us']:.1f}" if "user_us" in row else ""
            print(f"| {name} | {time_ns / 1000:.1f} | {user} |")


server = subprocess.Popen([BUILD / "exchange", "--serve", WORK / "wlan0"])
try:
    while not (WORK / "wlan0").exists():
        time.sleep(0.1)
    processor = run("lscpu", env=LOGIN, stdout=subprocess.PIPE).stdout
    print(re.search(r"Model name: *(.*)", processor)[1])
    print_native_tables()
    print_arm_table()
    print_in_process_table()
except subprocess.CalledProcessError as error:
    sys.exit(error.stderr or error)
finally:
    server.kill()
    shutil.rmtree(WORK)
