#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Usage: tests/outside/test_json.py PROGRAM SIMULATOR COMMAND_TEST REAL_TEST [OPTION OF UNITTEST...]
Validates JSON that PROGRAM prints against schema/: in the command tests, with the simulator, with
the real wpa_supplicant, and with replies from the fuzz corpora. Compares the schemas with
man/corvane-wifi.1. Needs python3-jsonschema.
"""
import collections
import json
import os
import pathlib
import random
import re
import shlex
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import jsonschema

ROOT = pathlib.Path(__file__).resolve().parents[2]
SCHEMAS = {name: json.loads((ROOT / f"schema/{name}.schema.json").read_text())
           for name in ("status", "list", "success")}
VALIDATORS = {name: jsonschema.Draft202012Validator(schema) for name, schema in SCHEMAS.items()}
SCHEMA_OF = {"status": "status", "list": "list", "connect": "success", "disconnect": "success",
             "forget": "success"}
VALID = {
    "status": {"state": "COMPLETED", "ssid": "Home", "address": "10.66.2.48", "saved_id": 0},
    "list": [{"ssid": "Home", "bssid": "02:00:00:00:02:00", "signal": -50, "frequency": 2437,
              "security": "WPA personal", "supported": True, "saved": True, "saved_id": 0,
              "current": True}],
    "success": {"ok": True},
}
# Runs the program with --json, and keeps what it prints.
RECORDER = """#!/bin/sh
umask 077
{program} --json "$@" >"${{0%/*}}/$$.json"
status=$?
for action; do case $action in --*) ;; *) break ;; esac done
echo "$status ${{action-}}" >"${{0%/*}}/$$.action"
cat "${{0%/*}}/$$.json"
exit "$status"
"""


def members(schema):
    """The description of an object's members."""
    return schema.get("items", schema)["properties"]


def wrong_documents(name):
    """Valid documents with one mistake each."""
    [document] = VALID[name] if name == "list" else [VALID[name]]
    objects = [document | {"further": 0}]
    for member, schema in members(SCHEMAS[name]).items():
        objects.append({key: value for key, value in document.items() if key != member})
        others = {"string": 0, "integer": "0", "boolean": "true"}
        objects += [document | {member: value} for value in (others[schema["type"]], None, [], 0.5)]
        if schema["type"] == "integer":
            objects += [document | {member: value} for value in (2**31, -2**31 - 1)]
    yield from ([one] for one in objects) if name == "list" else objects
    yield from (None, "", 0, document if name == "list" else [document])


class Supplicant:
    """Answers requests with `replies`, and those without a reply with OK."""

    def __init__(self, path):
        self.replies = {}
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.socket.bind(path)
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        while True:
            request, sender = self.socket.recvfrom(4096)
            self.socket.sendto(self.replies.get(request.decode(), b"OK\n"), sender)


def corpus(name):
    """The texts of each input, without the operations that are tests for the library."""
    for path in sorted((ROOT / f"tests/fuzz/corpus-{name}").iterdir()):
        texts = path.read_bytes().split(b"%\n")
        yield [text for text in texts if not text.startswith((b">", b"!"))]


def corpus_replies():
    """Replies to SCAN_RESULTS, LIST_NETWORKS and STATUS: the corpora, and random lines of them."""
    inputs = {name: list(corpus(name)) for name in ("networks", "status", "client")}
    for texts in inputs["networks"]:
        yield (texts + [b"", b""])[:3]
    for [text] in inputs["status"]:
        yield b"", b"", text
    texts = [text for input in sum(inputs.values(), []) for text in input]
    lines = [line for text in texts for line in text.splitlines(keepends=True)]
    chance = random.Random(1)
    for _ in range(100):
        replies = [bytearray().join(chance.choices(lines, k=chance.randrange(40)))
                   for _ in range(3)]
        for reply in replies:
            for at in chance.sample(range(len(reply)), k=len(reply) // 50):
                reply[at] = chance.choice(b"\0\t\n\r\x1b -09=\\\"\x7f\x80\xc3\xff")
        yield replies


class Json(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory())
        self.environment = os.environ | {
            "CORVANE_WPA_SOCKET": self.folder + "/wlan0", "CORVANE_WIFI_SCAN_DELAY_MS": "0"}
        self.counts = collections.Counter()

    def validate(self, action, status, text):
        if status != 0:
            self.assertEqual(text, "", f"{action} failed and printed JSON")
            return
        name = SCHEMA_OF[action]
        VALIDATORS[name].validate(json.loads(text))
        self.counts[name] += 1

    def run_program(self, *words):
        ended = subprocess.run([PROGRAM, "--json", *words], env=self.environment, encoding="utf-8",
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.validate(words[0], ended.returncode, ended.stdout)
        return ended.stdout

    def require_counts(self, *names):
        print(f"{self._testMethodName}: valid:",
              ", ".join(f"{count} {name}" for name, count in sorted(self.counts.items())))
        self.assertEqual({name for name in self.counts if self.counts[name]}, set(names))

    def validate_outputs_of(self, test):
        """Its tests fail, since each run of the program prints JSON; all that counts is what."""
        recorder = pathlib.Path(self.folder, "recorder")
        recorder.write_text(RECORDER.format(program=shlex.quote(PROGRAM)))
        recorder.chmod(0o755)
        environment = os.environ | {"CORVANE_TEST_PROGRAM": recorder, "GTEST_TOTAL_SHARDS": "4"}
        shards = [subprocess.Popen([test, "--gtest_filter=-*AfterFifteenSeconds"],
                                   env=environment | {"GTEST_SHARD_INDEX": str(index)},
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                  for index in range(4)]
        for shard in shards:
            self.assertGreaterEqual(shard.wait(), 0)
        for path in pathlib.Path(self.folder).glob("*.json"):
            status, action = path.with_suffix(".action").read_text().split(" ", 1)
            action = action.strip()
            if action in SCHEMA_OF:
                self.validate(action, int(status), path.read_text())

    def test_of_the_command_tests(self):
        self.validate_outputs_of(COMMAND_TEST)
        self.require_counts("status", "list", "success")

    def test_of_the_real_daemon(self):
        self.validate_outputs_of(REAL_TEST)
        if not self.counts and "CORVANE_REQUIRE_REAL" not in os.environ:
            self.skipTest("wpa_supplicant cannot run here")
        self.require_counts("status", "list", "success")

    def test_of_the_simulator(self):
        configuration = pathlib.Path(self.folder, "wpa_supplicant.conf")
        configuration.write_text("update_config=1\n")
        simulator = subprocess.Popen([SIMULATOR, self.folder + "/wlan0", configuration])
        self.addCleanup(simulator.wait)
        self.addCleanup(simulator.terminate)
        while not self.run_program("status"):
            time.sleep(0.01)
        for words in (["list"], ["connect", "--open", "Cafe"], ["status"], ["list", "--cached"],
                      ["disconnect"], ["status"], ["forget", "--yes", "Cafe"], ["list"]):
            self.assertNotEqual(self.run_program(*words), "", words)
        self.require_counts("status", "list", "success")

    def test_of_replies_from_the_fuzz_corpora(self):
        supplicant = Supplicant(self.folder + "/wlan0")
        networks = 0
        for replies in corpus_replies():
            supplicant.replies = dict(zip(("SCAN_RESULTS", "LIST_NETWORKS", "STATUS"), replies))
            self.run_program("status")
            networks += len(json.loads(self.run_program("list", "--cached")))
        self.assertGreater(networks, 300)
        self.require_counts("status", "list")


class Schemas(unittest.TestCase):
    def test_are_schemas_that_describe_and_require_every_member(self):
        for name, schema in SCHEMAS.items():
            jsonschema.Draft202012Validator.check_schema(schema)
            VALIDATORS[name].validate(VALID[name])
            self.assertCountEqual(schema.get("items", schema)["required"], members(schema))
            for member in members(schema).values():
                self.assertTrue(member["description"])

    def test_refuse_one_mistake_anywhere(self):
        for name, validator in VALIDATORS.items():
            refused = 0
            for document in wrong_documents(name):
                self.assertFalse(validator.is_valid(document), f"{name}: {document}")
                refused += 1
            print(f"refused: {refused} {name}")

    def test_refuse_networks_that_contradict_themselves(self):
        [network] = VALID["list"]
        for change in ({"ssid": ""}, {"security": "WEP"}, {"security": "unsupported"},
                       {"supported": False}, {"saved": False}, {"saved_id": -1},
                       {"saved": False, "saved_id": 1}):
            self.assertFalse(VALIDATORS["list"].is_valid([network | change]), change)


class ManualPage(unittest.TestCase):
    page = (ROOT / "man/corvane-wifi.1").read_text()

    def test_has_the_members_and_types_of_the_schemas(self):
        tables = re.findall(r"(?s)It Sy member.*?\.El", self.page)
        self.assertEqual(len(tables), 2)
        for table, name in zip(tables, ("status", "list")):
            rows = re.findall(r"(?m)^\.It (\w+) Ta (\w+) Ta ", table)
            schema = {member: of["type"] for member, of in members(SCHEMAS[name]).items()}
            self.assertEqual(dict(rows), schema)

    def test_has_the_words_for_the_security(self):
        [row] = re.findall(r"(?m)^\.It security .*$", self.page)
        words = re.findall(r"Do (.*?) (?:Dc|$)", row + " Dc")
        self.assertCountEqual(words, members(SCHEMAS["list"])["security"]["enum"])

    def test_has_the_success_reply(self):
        [reply] = re.findall(r"(?m)^\.Li ({.*})", self.page)
        VALIDATORS["success"].validate(json.loads(reply.replace(r"\(dq", '"')))


if sys.argv[1:] == ["--help"]:
    print(__doc__, end="")
elif len(sys.argv) < 5:
    print("tests/outside/test_json.py: four arguments are needed, see --help", file=sys.stderr)
    sys.exit(2)
else:
    PROGRAM, SIMULATOR, COMMAND_TEST, REAL_TEST, *options = sys.argv[1:]
    unittest.main(argv=sys.argv[:1] + options)
