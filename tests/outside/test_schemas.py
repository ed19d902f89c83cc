# SPDX-License-Identifier: MIT
"""Proves that schema/ accepts only the program's JSON, and agrees with the manual page."""
import json
import re
import socket
import threading

import pytest

from conftest import PROGRAM, ROOT

NAMES = "status", "list", "success"
SCHEMAS = {name: json.loads((ROOT / f"schema/{name}.schema.json").read_text()) for name in NAMES}
NETWORK = {"ssid": "Home", "bssid": "02:00:00:00:02:00", "signal": -50, "frequency": 2437,
           "security": "WPA personal", "supported": True, "saved": True, "saved_id": 0,
           "current": True}
VALID = {
    "status": {"state": "COMPLETED", "ssid": "Home", "address": "10.66.2.48", "saved_id": 0},
    "list": [NETWORK],
    "success": {"ok": True},
}
MANUAL = (ROOT / "man/corvane-wifi.1").read_text()


def validator(name):
    jsonschema = pytest.importorskip("jsonschema")
    jsonschema.Draft202012Validator.check_schema(SCHEMAS[name])
    return jsonschema.Draft202012Validator(SCHEMAS[name])


def members(name):
    """The description of an object's members."""
    return SCHEMAS[name].get("items", SCHEMAS[name])["properties"]


def wrong_documents(name):
    """Valid documents with one mistake each."""
    [document] = VALID[name] if name == "list" else [VALID[name]]
    objects = [document | {"further": 0}]
    for member, schema in members(name).items():
        objects.append({key: value for key, value in document.items() if key != member})
        others = {"string": 0, "integer": "0", "boolean": "true"}
        objects += [document | {member: value} for value in (others[schema["type"]], None, [], 0.5)]
        if schema["type"] == "integer":
            objects += [document | {member: value} for value in (2**31, -2**31 - 1)]
    yield from ([one] for one in objects) if name == "list" else objects
    yield from (None, "", 0, document if name == "list" else [document])


def corpus(name):
    """The texts of each input."""
    for path in (ROOT / f"tests/fuzz/corpus-{name}").iterdir():
        yield path.read_bytes().split(b"%\n")


def corpus_replies():
    """Replies to SCAN_RESULTS, LIST_NETWORKS and STATUS."""
    yield from ((texts + [b"", b""])[:3] for texts in corpus("networks"))
    yield from ([b"", b"", *text] for text in corpus("status"))
    yield b"\x7f\t1\t1\t\t\x1b\x80\n", b"0\t\xff\x01\n", b"wpa_state=\x80\nssid=\x1b\n"


@pytest.fixture
def replies(folder):
    """A supplicant that answers requests with these replies, and others with OK."""
    replies = {}
    server = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
    server.bind(str(folder / "wlan0"))

    def serve():
        while True:
            request, sender = server.recvfrom(4096)
            server.sendto(replies.get(request.decode(), b"OK\n"), sender)

    threading.Thread(target=serve, daemon=True).start()
    return replies


def test_describe_what_the_program_prints(simulate, wifi):
    simulate("Cafe", "Home")
    for name, *words in (["status", "status"], ["list", "list"],
                         ["success", "connect", "--open", "Cafe"], ["status", "status"],
                         ["list", "list", "--cached"], ["success", "disconnect"],
                         ["status", "status"], ["success", "forget", "--yes", "Cafe"]):
        validator(name).validate(json.loads(wifi(*words, "--json")))


def test_describe_what_the_program_makes_of_the_fuzz_corpora(replies, run):
    printed = {"status": [], "list": []}
    for texts in corpus_replies():
        replies |= zip(("SCAN_RESULTS", "LIST_NETWORKS", "STATUS"), texts)
        for action, of_action in printed.items():
            # What is not UTF-8 must not be printed.
            ended = run(PROGRAM, action, "--cached", "--json", encoding="utf-8", errors="strict")
            assert (ended.returncode, ended.stderr) == (0, ""), texts
            of_action.append(json.loads(ended.stdout))
    for action, of_action in printed.items():
        assert any(of_action)
        for document in of_action:
            validator(action).validate(document)


@pytest.mark.parametrize("name", NAMES)
def test_describe_and_require_every_member(name):
    validator(name).validate(VALID[name])
    required = SCHEMAS[name].get("items", SCHEMAS[name])["required"]
    assert sorted(required) == sorted(members(name))
    assert all(member["description"] for member in members(name).values())


@pytest.mark.parametrize("name", NAMES)
def test_refuse_one_mistake_anywhere(name):
    is_valid = validator(name).is_valid
    assert [document for document in wrong_documents(name) if is_valid(document)] == []


@pytest.mark.parametrize("change", [
    {"ssid": ""}, {"security": "WEP"}, {"security": "unsupported"}, {"supported": False},
    {"saved": False}, {"saved_id": -1}, {"saved": False, "saved_id": 1}])
def test_refuse_networks_that_contradict_themselves(change):
    assert not validator("list").is_valid([NETWORK | change])


def test_have_the_members_and_types_of_the_manual_page():
    tables = re.findall(r"(?s)It Sy member.*?\.El", MANUAL)
    rows = [dict(re.findall(r"(?m)^\.It (\w+) Ta (\w+) Ta ", table)) for table in tables]
    assert rows == [{member: of["type"] for member, of in members(name).items()}
                    for name in ("status", "list")]


def test_have_the_words_of_the_manual_page_for_the_security():
    [row] = re.findall(r"(?m)^\.It security .*$", MANUAL)
    words = re.findall(r"Do (.*?) (?:Dc|$)", row + " Dc")
    assert sorted(words) == sorted(members("list")["security"]["enum"])


def test_have_the_success_reply_of_the_manual_page():
    [reply] = re.findall(r"(?m)^\.Li ({.*})", MANUAL)
    validator("success").validate(json.loads(reply.replace(r"\(dq", '"')))
