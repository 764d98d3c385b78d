"""The options, output formats and exit statuses that all commands share."""

import ctypes
import json
import re
import signal
import subprocess
import sys
from pathlib import Path

import pytest

from progkeysctl import Tool, environment
from samples import CALL, SET_KEY
from sandbox.bus import PrivateBus
from sandbox.client import Client
from sandbox.processes import Module

@pytest.mark.parametrize("words", [["key", "list"], ["press", "2/5"]], ids=" ".join)
def test_commands_fail_without_the_service(ctl: Tool, words: list[str]) -> None:
    result = ctl(*words)
    assert (result.status, result.out) == (8, "")
    assert "ZelProgrammableKeys is not running on the system bus at" in result.err
    assert "Start it" in result.err


def test_commands_fail_without_a_bus(offline: Tool) -> None:
    result = offline("key", "list")
    assert (result.status, result.out) == (1, "")
    assert "Cannot reach the system bus at unix:path=/nonexistent/bus" in result.err
    assert "--address" in result.err


@pytest.mark.parametrize(
    ("words", "expected"),
    [
        (["--version"], r"\d+\.\d+"),
        (["-V"], r"\d+\.\d+"),
        (["--help"], "Usage: progkeysctl COMMAND"),
        (["help"], "Usage: progkeysctl COMMAND"),
        (["key", "--help"], "Usage: progkeysctl key COMMAND"),
        (["key", "add", "-h"], "Usage: progkeysctl key add "),
        (["help", "key", "add"], "Usage: progkeysctl key add "),
    ],
    ids=lambda value: " ".join(value) if isinstance(value, list) else "",
)
def test_help_needs_no_phone(offline: Tool, words: list[str], expected: str) -> None:
    result = offline(*words)
    assert (result.status, result.err) == (0, "")
    assert re.match(expected, result.out)


def test_the_help_of_every_command_fits_the_terminal_and_has_the_common_options(offline: Tool) -> None:
    commands = [row["command"].split() for row in offline.json("help", "--list")]
    assert len(commands) > 20
    for words in commands:
        shown = offline(*words, "--help")
        assert max(map(len, shown.lines)) <= 80, words
        assert "\n  --timeout SECONDS " in shown.out
    narrow = offline.on_terminal(60, "key", "add", "--help")
    assert 50 < max(map(len, narrow.lines)) <= 60


@pytest.mark.parametrize(
    ("words", "message"),
    [
        ([], "A command is required"),
        (["key"], "A command is required"),
        (["keys"], 'Unknown command "keys"'),
        (["help", "key", "lst"], 'Did you mean "list"?'),
        (["key", "paint"], 'Unknown command "key paint"'),
        (["key", "lst"], 'Did you mean "list"?'),
        (["key", "list", "--paint"], "Unknown option --paint"),
        (["key", "list", "--feilds", "idKey"], 'Did you mean "--fields"?'),
        (["key", "list", "all"], 'Unexpected argument "all"'),
        (["key", "list", "--type"], "--type requires a value"),
        (["key", "list", "--container", "--", "home"], "--container requires a value"),
        (["key", "--", "list"], 'Unexpected argument "list"'),
        (["key", "list", "--no-legend=x"], "--no-legend takes no value"),
        (["key", "list", "--no-legend="], "--no-legend takes no value"),
        (["key", "list", "--json=", "short"], 'Unexpected argument "short"'),
        (["sandbox", "sh", "-c", "true"], 'Unknown option -c.\nSee "progkeysctl sandbox --help"'),
        (["key", "--container", "home", "list"], "--container must follow the command"),
        (["key", "delete", "[1,2]"], 'KEY_ID: "[1,2]" is not'),
        (["key", "add", "position=1", "icon=\udcff"], "is not UTF-8"),
        (["key", "list", "--timeout", "1", "--timeout", "2"], "--timeout is given more than once"),
        (["key", "show"], "KEY_ID is required"),
        (["key", "list", "-j", "--terse"], "--terse cannot be combined with -j"),
        (["key", "list", "--json=long"], '--json: "long" is not one of pretty, short'),
        (["status", "--system", "--session"], "--session cannot be combined with --system"),
        (["status", "--timeout", "0"], '--timeout: "0" is not a number of seconds from 0.001 to 2000000'),
        (["status", "--timeout", "soon"], '--timeout: "soon" is not a number of seconds'),
        (["status", "--timeout", "nan"], '--timeout: "nan" is not a number of seconds'),
        (["monitor", "--limit", "0"], '--limit: "0" is not an integer from 1 to 1000000000'),
        (["restore", "everything", "--yes"], 'default|factory: "everything" is not one of default, factory'),
    ],
    ids=lambda value: " ".join(value) or "nothing" if isinstance(value, list) else None,
)
def test_an_invalid_command_line_is_refused(offline: Tool, words: list[str], message: str) -> None:
    result = offline(*words)
    assert (result.status, result.out) == (2, "")
    assert result.err.startswith("progkeysctl: error: ")
    assert message in result.err
    assert "--help" in result.err


@pytest.fixture
def phone_with_key(client: Client, phone: Module) -> Module:
    id_action = client.add_action(CALL._replace(label="Empfang: Ü, 受付 ☎", arguments="a:b\\c\nd"))
    client.create_programmable_key(SET_KEY._replace(idAction=id_action, container="a" * 60, icon="受付" * 20))
    return phone


def test_json_is_short_or_pretty(ctl: Tool, client: Client, phone_with_key: Module) -> None:
    short = ctl("key", "list", "--json=short")
    pretty = ctl("key", "list", "--json=pretty")
    key = client.get_all_programmable_keys()[0]
    label = client.get_action(key.idAction)[0].label
    assert short.json == pretty.json == [{**key._asdict(), "label": label}]
    assert len(short.lines) == 1
    assert len(pretty.lines) > 9
    assert ctl("key", "list", "-j").out == short.out
    assert json.loads(ctl.on_terminal(40, "key", "list", "-j").out) == short.json
    assert len(ctl.on_terminal(40, "key", "list", "-j").lines) > 9


def test_json_has_only_the_selected_fields(ctl: Tool, phone_with_key: Module) -> None:
    assert ctl.json("key", "list", "--fields", "idKey,type") == [{"idKey": 1, "type": 0}]
    assert 'Did you mean "position"?' in ctl("key", "list", "--fields", "postion").err


def test_terse_lines_can_be_parsed(ctl: Tool, phone_with_key: Module) -> None:
    listed = ctl("action", "list", "--terse", "--fields", "idAction,arguments,label")
    assert listed.lines == ["-1::", r"1:a\:b\\c\nd:Empfang\: Ü, 受付 ☎"]


def test_a_table_is_wrapped_to_fit_the_terminal(ctl: Tool, phone_with_key: Module) -> None:
    for width in (80, 100):
        shown = ctl.on_terminal(width, "key", "list", env={"NO_COLOR": "1"})
        assert shown.status == 0
        assert max(columns(line) for line in shown.lines) <= width
        assert shown.lines[0].startswith("idKey  idAction")
        assert sum(line.count("a") for line in shown.lines[1:-1]) == 60 + "Empfang".count("a")
    assert shown.lines[-1] == "1 key"


def test_a_table_is_not_wrapped_on_a_wide_terminal_or_without_a_terminal(ctl: Tool, phone_with_key: Module) -> None:
    wide = ctl.on_terminal(300, "key", "list", env={"NO_COLOR": "1"})
    assert wide.out == ctl("key", "list").out
    assert "a" * 60 in wide.out
    assert "受付" * 20 in wide.out


def test_columns_are_aligned_with_wide_characters(ctl: Tool, client: Client, phone_with_key: Module) -> None:
    client.create_programmable_key(SET_KEY._replace(idAction=1, container="b", icon="e\u0301\U0001f44d"))
    lines = ctl("key", "list", "--no-legend").lines
    # The last column begins at the same position in both rows.
    assert [columns(line.removesuffix("0")) for line in lines] == [columns(lines[0].removesuffix("0"))] * 2


def test_no_legend_prints_only_rows(ctl: Tool, phone_with_key: Module) -> None:
    assert len(ctl("key", "list", "--no-legend").lines) == 1
    assert len(ctl("key", "list").lines) == 3


def test_color_depends_on_the_terminal_and_the_option(ctl: Tool, phone_with_key: Module) -> None:
    assert "\x1b[" in ctl.on_terminal(80, "key", "list").out
    assert "\x1b[" not in ctl.on_terminal(80, "key", "list", env={"NO_COLOR": "1"}).out
    assert "\x1b[" not in ctl.on_terminal(80, "key", "list", env={"TERM": "dumb"}).out
    assert "\x1b[" not in ctl("key", "list").out
    assert "\x1b[" not in ctl("key", "show", "7").err
    assert "\x1b[" not in ctl.on_terminal(80, "key", "list", "--color=never").out
    assert "\x1b[" in ctl("key", "list", "--color", "always").out
    assert "\x1b[" in ctl("key", "show", "7", "--color", "always", env={"NO_COLOR": "1"}).err


def test_control_characters_are_escaped(ctl: Tool, client: Client, phone: Module) -> None:
    client.add_action(CALL._replace(label="\x1b[2Jgone\r\n\u202eback"))
    shown = ctl("action", "list")
    assert r"\x1b[2Jgone\r\n\u202eback" in shown.out
    assert "\x1b" not in ctl("action", "delete", "1").out


# The bus


def test_the_session_bus_and_an_address_can_be_selected(offline: Tool, bus: PrivateBus, phone: Module) -> None:
    by_address = offline("status", "--address", bus.address, "--json=short")
    assert (by_address.status, by_address.json["bus"], by_address.json["busAddress"]) == (0, "address", bus.address)
    on_session = offline("--session", "--json=short", "status", env={"DBUS_SESSION_BUS_ADDRESS": bus.address})
    assert (on_session.status, on_session.json["bus"], on_session.json["busAddress"]) == (0, "session", bus.address)


def test_a_late_reply_is_a_timeout(ctl: Tool, client: Client, phone: Module) -> None:
    phone.send_signal(signal.SIGSTOP)
    try:
        result = ctl("key", "list", "--timeout", "0.2")
    finally:
        phone.send_signal(signal.SIGCONT)
    assert (result.status, result.out) == (3, "")
    assert "ZelProgrammableKeys did not answer within 0.2 s" in result.err


def test_after_a_timeout_no_further_calls_are_made(ctl: Tool, phone: Module) -> None:
    phone.send_signal(signal.SIGSTOP)
    try:
        result = ctl("key", "delete", "1", "2", "3", "--timeout", "0.2")
    finally:
        phone.send_signal(signal.SIGCONT)
    assert result.status == 3
    assert result.err.count("error:") == 1


def test_calls_denied_by_the_policy_are_reported(bin_dir: Path, tmp_path: Path) -> None:
    """The bus denies all calls of the service."""
    with RestrictedBus('send_destination="com.velmora.Tessaro.ZelProgrammableKeys"') as restricted:
        owner = Client(restricted.address)
        owner.connection.request_name("com.velmora.Tessaro.ZelProgrammableKeys")
        result = Tool(bin_dir, restricted.address)("key", "list")
        owner.close()
    assert (result.status, result.out) == (5, "")
    assert "Access to ZelProgrammableKeys is denied" in result.err
    assert "group progkeys-admin" in result.err
    assert "org.freedesktop" not in result.err


EVENTS = 'receive_type="signal" receive_path="/com/velmora/Tessaro/ZelProgrammableKeys" receive_interface="com.velmora.Tessaro.ZELEvents"'


@pytest.mark.parametrize("words", [["monitor", "--timeout", "5"], ["press", "2/5"]], ids=lambda words: words[0])
def test_events_denied_by_the_policy_are_reported(bin_dir: Path, words: list[str]) -> None:
    """The bus drops events without an error reply."""
    with RestrictedBus(EVENTS) as restricted:
        owner = Client(restricted.address)
        owner.connection.request_name("com.velmora.Tessaro.ZelProgrammableKeys")
        result = Tool(bin_dir, restricted.address)(*words)
        owner.close()
    assert (result.status, result.out) == (5, "")
    assert "Listening" not in result.err
    assert "Receiving events is denied" in result.err
    assert "group progkeys-admin" in result.err


class RestrictedBus(PrivateBus):
    """A bus with a policy rule that denies some messages."""

    def __init__(self, denied: str) -> None:
        super().__init__()
        rule = f"<deny {denied}/>\n  </policy>"
        text = self._configuration.read_text(encoding="utf-8")
        self._configuration.write_text(text.replace("</policy>", rule), encoding="utf-8")


def test_a_service_that_ends_during_a_call_is_not_running(ctl: Tool, bus: PrivateBus) -> None:
    """A fake service ends during the call."""
    script = (
        "import dbus, dbus.bus, os, sys\n"
        "from dbus.mainloop.glib import DBusGMainLoop\n"
        "from gi.repository import GLib\n"
        "bus = dbus.bus.BusConnection(sys.argv[1], mainloop=DBusGMainLoop())\n"
        "bus.add_message_filter(lambda _, m: os._exit(0) if m.get_member() == 'getAllProgrammableKeys' else 1)\n"
        "bus.request_name('com.velmora.Tessaro.ZelProgrammableKeys')\n"
        "print('ready', flush=True)\n"
        "GLib.MainLoop().run()\n"
    )
    with subprocess.Popen([sys.executable, "-c", script, bus.address], stdout=subprocess.PIPE, text=True) as fake:
        assert fake.stdout.readline() == "ready\n"
        result = ctl("key", "list")
    assert (result.status, result.out) == (8, "")


def test_a_failure_to_write_the_output_is_an_error(ctl: Tool, phone_with_key: Module) -> None:
    with open("/dev/full", "wb") as full:
        ended = subprocess.run(
            ctl.command("key", "list"), stdout=full, stderr=subprocess.PIPE, encoding="utf-8",
            env=environment(ctl.address, {}), check=False,
        )
    assert ended.returncode == 1
    assert "Cannot write the output: No space left on device" in ended.stderr


def columns(text: str) -> int:
    """The number of terminal columns of the text, according to the C library."""
    libc = ctypes.CDLL(None)
    libc.setlocale(0, b"C.UTF-8")
    clusters: list[int] = []
    for character in text:
        width = libc.wcwidth(ord(character))
        if width == 0 and clusters:
            continue
        clusters.append(width)
    return sum(clusters)
