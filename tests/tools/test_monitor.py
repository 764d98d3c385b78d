"""The commands `monitor`, `wait`, `status` and `restore`."""

import json
import re
import signal
import subprocess
from pathlib import Path
from typing import Callable, Iterator

import dbus
import pytest

from progkeysctl import Tool
from samples import CALL, MODULE_KEY
from sandbox.bus import PrivateBus
from sandbox.client import Client
from sandbox.loop import LIMIT, wait_until
from sandbox.processes import Module


@pytest.fixture
def monitor(ctl: Tool) -> Iterator[Callable[..., subprocess.Popen]]:
    """Starts monitors and ends them after the test."""
    started = []

    def start(*words: object) -> subprocess.Popen:
        process = ctl.start("monitor", *words)
        started.append(process)
        assert "Listening on the system bus" in process.stderr.readline()
        return process

    yield start
    for process in started:
        process.kill()
        process.communicate()


def ended(process: subprocess.Popen) -> tuple[int, list[str]]:
    """Waits for the end of a monitor and returns its status and lines."""
    out, _ = process.communicate(timeout=LIMIT)
    return process.returncode, out.splitlines()


def test_events_are_named_and_decoded(monitor, client: Client, phone: Module) -> None:
    listening = monitor("--limit", 4, "--json=short")
    action = CALL._replace(idAction=client.add_action(CALL))
    key = MODULE_KEY._replace(idAction=action.idAction)
    key = key._replace(idKey=client.create_programmable_key(key))
    client.delete_programmable_key(key.idKey)
    status, lines = ended(listening)
    assert status == 0
    events = [json.loads(line) for line in lines]
    assert [(each["event"], each["arguments"]) for each in events] == [
        ("ACTION_CREATE_NTF", [{"name": "idAction", "value": action._asdict()}]),
        ("KEY_CREATE_NTF", [{"name": "idKey", "value": key._asdict()}]),
        (
            "AOM_SET_ICON_PROPERTY_REC",
            [{"name": name, "value": value} for name, value in [("addr", 2), ("aom_type", 1), ("key_num", 5), ("icon_x", 0), ("icon_y", 0)]],
        ),
        ("KEY_DELETE_NTF", [{"name": "idKey", "value": key.idKey}]),
    ]
    assert {each["module"] for each in events} == {"ZelProgrammableKeys"}
    assert all(re.fullmatch(r"\d{4}-\d\d-\d\dT[\d:.]+", each["time"]) for each in events)


def test_events_are_printed_as_text(monitor, client: Client, phone: Module) -> None:
    listening = monitor("--limit", 1, "--since-start")
    client.add_action(CALL)
    status, lines = ended(listening)
    assert status == 0
    assert re.fullmatch(
        r' *\d+\.\d{3}  ACTION_CREATE_NTF  idAction=\{idAction=1 type=3 action="call" webAppName="phonebook" arguments="501" label="Reception" shortLabel="Rec"\}',
        lines[0],
    )


def test_each_event_is_printed_immediately(monitor, client: Client, phone: Module) -> None:
    listening = monitor("-j")
    client.add_action(CALL)
    assert json.loads(listening.stdout.readline())["event"] == "ACTION_CREATE_NTF"
    client.delete_action(1)
    assert json.loads(listening.stdout.readline())["event"] == "ACTION_DELETE_NTF"


def test_only_asterisk_and_question_mark_are_wildcards(monitor, client: Client, bus: PrivateBus) -> None:
    listening = monitor("--limit", 2, "--terse", "--fields", "event", "--match", "[", "A?C*")
    for name in ("ABD", "[", "xABC", "ABC(1)/2"):
        client.send_event(name)
    assert ended(listening) == (0, ["[", "ABC(1)/2"])


def test_only_matching_events_are_shown_and_counted(monitor, client: Client, phone: Module) -> None:
    listening = monitor("--match", "KEY_*", "--match", "ACTION_DELETE_NTF", "--limit", 2, "--terse", "--fields", "event")
    client.add_action(CALL)
    client.create_programmable_key(MODULE_KEY._replace(idAction=1))
    client.delete_action(1)
    assert ended(listening) == (0, ["KEY_CREATE_NTF", "KEY_DELETE_NTF"])


def test_events_of_any_sender_and_any_type_are_shown(monitor, client: Client) -> None:
    listening = monitor("--limit", 1, "--json=short")
    values = [
        ("list", dbus.Array([1, 2], signature="i"), True),
        ("map", dbus.Dictionary({"a": dbus.Array(["b"], signature="s")}, signature="sas"), False),
        ("structure", dbus.Struct((dbus.Int32(1), "x", dbus.Struct((dbus.Boolean(True),)))), True),
        ("variant", dbus.String("inner", variant_level=2), True),
        ("path", dbus.ObjectPath("/a/b"), True),
        ("signature", dbus.Signature("a{sv}"), True),
        ("bytes", dbus.ByteArray(b"\x00\xff"), True),
        ("byte", dbus.Byte(7), True),
        ("double", dbus.Double(0.5), True),
        ("wide", dbus.Int64(2**53 + 1), True),
        ("unsigned", dbus.UInt64(2**53), True),
        ("widest", dbus.UInt64(2**64 - 1), True),
        ("text", "a\n\x1b[31mb", True),
        ("text", "again", True),
    ]
    client.send_raw_event("sa(svb)", "OTHER", values)
    status, lines = ended(listening)
    event = json.loads(lines[0])
    assert status == 0
    assert event["module"] == "Client"
    assert [(each["name"], each["value"]) for each in event["arguments"]] == [
        ("list", [1, 2]),
        ("map", {"a": ["b"]}),
        ("structure", [1, "x", [True]]),
        ("variant", "inner"),
        ("path", "/a/b"),
        ("signature", "a{sv}"),
        ("bytes", "00ff"),
        ("byte", 7),
        ("double", 0.5),
        ("wide", str(2**53 + 1)),
        ("unsigned", 2**53),
        ("widest", str(2**64 - 1)),
        ("text", "a\n\x1b[31mb"),
        ("text", "again"),
    ]


def test_control_characters_in_events_are_escaped(monitor, client: Client) -> None:
    listening = monitor("--limit", 1)
    client.send_event("NAME\x1b[2J", text="a\n\x1b[31mb\u202ec")
    _, lines = ended(listening)
    assert len(lines) == 1
    assert lines[0].endswith(r'NAME\x1b[2J  text="a\n\x1b[31mb\u202ec"')


def test_an_invalid_event_causes_a_warning(monitor, client: Client) -> None:
    listening = monitor("--limit", 1, "--terse", "--fields", "event")
    client.send_raw_event("su", "NONE", 1)
    client.send_event("ONE")
    out, err = listening.communicate(timeout=LIMIT)
    assert out == "ONE\n"
    assert 'invalid signature "su"' in err


def test_the_monitor_ends_after_the_timeout(ctl: Tool) -> None:
    result = ctl("monitor", "--timeout", "0.2")
    assert (result.status, result.out) == (3, "")


def test_a_lost_bus_ends_the_monitor(monitor, bus: PrivateBus) -> None:
    listening = monitor()
    bus.stop()
    _, err = listening.communicate(timeout=LIMIT)
    assert listening.returncode == 1
    assert "The connection to the system bus" in err and "is lost" in err


def test_ctrl_c_ends_the_monitor(monitor) -> None:
    listening = monitor()
    listening.send_signal(signal.SIGINT)
    assert listening.wait(LIMIT) == -signal.SIGINT


# wait


def test_wait_ends_when_the_service_is_running(ctl: Tool, client: Client, settings_manager: Module, launch) -> None:
    waiting = ctl.start("wait")
    module = launch()
    assert waiting.communicate(timeout=LIMIT) == ("", "ZelProgrammableKeys is running.\n")
    assert waiting.returncode == 0
    assert client.get_all_actions()
    assert ctl.json("wait") == {"running": True}
    module.stop()


def test_wait_ends_after_the_timeout(ctl: Tool) -> None:
    result = ctl("wait", "--timeout", "0.2")
    assert (result.status, result.out) == (3, "")
    assert "ZelProgrammableKeys is not running on" in result.err


def test_names_of_other_modules_do_not_end_the_wait(ctl: Tool, bus: PrivateBus, settings_manager: Module) -> None:
    assert ctl("wait", "--timeout", "0.2").status == 3
    assert ctl("wait", "SettingsManager").status == 0


def test_wait_ends_with_a_lost_bus(ctl: Tool, bus: PrivateBus, client: Client) -> None:
    names = len(client.connection.list_names())
    waiting = ctl.start("wait")
    wait_until(lambda: len(client.connection.list_names()) > names, "the tool is on the bus")
    bus.stop()
    _, err = waiting.communicate(timeout=LIMIT)
    assert waiting.returncode == 1
    # The bus may end before the connection is complete.
    assert "is lost" in err or "Cannot reach" in err


# status


def test_the_status_of_a_phone(ctl: Tool, client: Client, phone: Module, bus: PrivateBus, settings_dir: Path) -> None:
    client.add_action(CALL)
    client.create_programmable_key(MODULE_KEY._replace(idAction=1))
    assert ctl.json("status") == {
        "running": True,
        "bus": "system",
        "busAddress": bus.address,
        "setKeys": 0,
        "moduleKeys": 1,
        "otherKeys": 0,
        "provisionedKeys": 0,
        "limit": 1000,
        "userActions": 1,
        "provisionedActions": 0,
        "peers": ["SettingsManager", "ZelProgrammableKeys"],
    }
    (settings_dir / "ProgKeysMax").unlink()
    assert ctl.json("status")["limit"] is None


def test_the_status_of_a_phone_without_the_service(ctl: Tool, settings_manager: Module) -> None:
    result = ctl.json("status", status=8)
    assert result["running"] is False
    assert result["peers"] == ["SettingsManager"]
    assert [name for name, value in result.items() if value is None] == [
        "limit", "moduleKeys", "otherKeys", "provisionedActions", "provisionedKeys", "setKeys", "userActions"
    ]


# restore


@pytest.mark.parametrize("what", ["default", "factory"])
def test_a_restore_with_yes_deletes_all_records(ctl: Tool, client: Client, phone: Module, what: str) -> None:
    client.add_action(CALL)
    client.create_programmable_key(MODULE_KEY._replace(idAction=1))
    refused = ctl("restore", what)
    assert (refused.status, refused.out) == (2, "")
    assert "This deletes 1 key and 1 action, including those of users" in refused.err
    assert client.get_all_programmable_keys()

    restored = ctl("restore", what, "--yes")
    assert (restored.status, restored.out) == (0, "Restored the provisioned defaults: 0 keys and 0 actions.\n")
    assert client.get_all_programmable_keys() == []
    assert ctl.json("restore", what, "--yes") == {"restored": what, "keys": 0, "actions": 0}


def test_a_restore_without_a_reply_may_still_be_running(ctl: Tool, phone: Module) -> None:
    phone.send_signal(signal.SIGSTOP)
    try:
        result = ctl("restore", "default", "--yes", "--timeout", "0.3")
    finally:
        phone.send_signal(signal.SIGCONT)
    assert (result.status, result.out) == (3, "")
    assert "The restore may still be running" in result.err
