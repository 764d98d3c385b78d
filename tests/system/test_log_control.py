"""Reading and setting the log level of a running process over the bus."""

import os
import xml.etree.ElementTree as ElementTree

import dbus
import pytest

from samples import CALL, sent
from sandbox.client import INTROSPECTABLE, BusError
from sandbox.names import SERVICE, SETTINGS_MANAGER, bus_name

PATH = "/org/freedesktop/LogControl1"
LOG_CONTROL = "org.freedesktop.LogControl1"
PROPERTIES = "org.freedesktop.DBus.Properties"
PEER = "org.freedesktop.DBus.Peer"
ERROR = "org.freedesktop.DBus.Error"

LEVELS = ["emerg", "alert", "crit", "err", "warning", "notice", "info", "debug"]


def proxy(client, module=SERVICE):
    """A proxy of dbus-python, which introspects the object first."""
    return dbus.Interface(client.connection.get_object(bus_name(module), PATH), PROPERTIES)


def call(client, method, signature, *arguments, interface=PROPERTIES):
    return client.call(method, signature, *arguments, interface=interface, path=PATH)


def set_level(client, level):
    assert call(client, "Set", "ssv", LOG_CONTROL, "LogLevel", level).signature == ""


# Reading


@pytest.mark.parametrize("interface", [LOG_CONTROL, ""], ids=["the interface", "any interface"])
def test_all_properties_are_read_at_once(service, client, interface):
    reply = call(client, "GetAll", "s", interface)
    assert reply.signature == "a{sv}"
    assert reply.values == (
        {"LogLevel": "debug", "LogTarget": "console", "SyslogIdentifier": SERVICE},
    )


@pytest.mark.parametrize("level", range(8), ids=lambda level: LEVELS[level])
def test_the_level_is_the_one_the_process_was_started_with(start, client, level):
    start(log_level=level)
    assert proxy(client).Get(LOG_CONTROL, "LogLevel") == LEVELS[level]


def test_the_target_is_the_journal_if_stderr_is_the_journal(start, client, tmp_path):
    log = tmp_path / "journal"
    log.touch()
    stream = f"{os.stat(log).st_dev}:{os.stat(log).st_ino}"
    start(log_path=log, extra={"JOURNAL_STREAM": stream})
    assert proxy(client).Get(LOG_CONTROL, "LogTarget") == "journal"
    proxy(client).Set(LOG_CONTROL, "LogTarget", "journal")  # no change
    with pytest.raises(BusError, match="NotSupported"):
        call(client, "Set", "ssv", LOG_CONTROL, "LogTarget", "console")


def test_the_settings_manager_has_the_properties_too(settings_manager, client):
    properties = proxy(client, SETTINGS_MANAGER)
    assert properties.Get(LOG_CONTROL, "SyslogIdentifier") == SETTINGS_MANAGER
    properties.Set(LOG_CONTROL, "LogLevel", "err")
    assert properties.Get(LOG_CONTROL, "LogLevel") == "err"


# Setting


def test_debug_lines_are_written_while_the_level_is_debug(start, client):
    service = start(log_level=6)
    client.add_action(CALL)
    service.log.take()
    client.add_action(CALL)
    assert service.log.take() == []
    set_level(client, "debug")
    client.add_action(CALL)
    changed = "The log level changes from info to debug"
    assert service.log.take() == [changed, *sent("ACTION_CREATE_NTF")]
    set_level(client, "info")
    client.add_action(CALL)
    assert service.log.take() == ["The log level changes from debug to info"]


@pytest.mark.parametrize("level", LEVELS)
def test_a_level_can_be_set_and_the_change_is_logged(service, client, level):
    properties = proxy(client)
    properties.Set(LOG_CONTROL, "LogLevel", level)
    assert properties.Get(LOG_CONTROL, "LogLevel") == level
    expected = [] if level == "debug" else [f"The log level changes from debug to {level}"]
    assert service.log.take("info") == expected


def test_errors_are_not_logged_below_level_err(service, client):
    set_level(client, "crit")
    service.log.take()
    client.delete_action(-1)
    assert service.log.take() == []
    set_level(client, "err")
    client.delete_action(-1)
    assert len(service.log.take("error")) == 1


def test_a_change_between_levels_below_info_is_not_logged(start, client):
    service = start(log_level=3)
    set_level(client, "warning")
    assert service.log.take() == []


def test_a_call_that_expects_no_reply_sets_the_level(service, client):
    message = client.message(
        "Set", "ssv", LOG_CONTROL, "LogLevel", "err", interface=PROPERTIES, path=PATH
    )
    message.set_no_reply(True)
    client.connection.send_message(message)
    assert proxy(client).Get(LOG_CONTROL, "LogLevel") == "err"


# Refusals

LEVEL = ("ssv", LOG_CONTROL, "LogLevel")
TARGET = ("ssv", LOG_CONTROL, "LogTarget")
REFUSALS = {
    "an unknown level": (PROPERTIES, "Set", (*LEVEL, "verbose"), "InvalidArgs"),
    "a level in capitals": (PROPERTIES, "Set", (*LEVEL, "DEBUG"), "InvalidArgs"),
    "a number": (PROPERTIES, "Set", (*LEVEL, dbus.Int32(7)), "InvalidArgs"),
    "a structure": (PROPERTIES, "Set", (*LEVEL, dbus.Struct(("info",))), "InvalidArgs"),
    "a string that is no variant": (PROPERTIES, "Set", ("sss", *LEVEL[1:], "info"), "UnknownMethod"),
    "another target": (PROPERTIES, "Set", (*TARGET, "journal"), "NotSupported"),
    "the identifier": (
        PROPERTIES,
        "Set",
        ("ssv", LOG_CONTROL, "SyslogIdentifier", "other"),
        "PropertyReadOnly",
    ),
    "an unknown property": (
        PROPERTIES,
        "Set",
        ("ssv", LOG_CONTROL, "Level", "info"),
        "UnknownProperty",
    ),
    "a property of an unknown interface": (
        PROPERTIES,
        "Set",
        ("ssv", "a.b", "LogLevel", "info"),
        "UnknownProperty",
    ),
    "reading an unknown property": (
        PROPERTIES,
        "Get",
        ("ss", LOG_CONTROL, "Level"),
        "UnknownProperty",
    ),
    "reading from an unknown interface": (
        PROPERTIES,
        "Get",
        ("ss", "a.b", "LogLevel"),
        "UnknownProperty",
    ),
    "reading all of an unknown interface": (
        PROPERTIES,
        "GetAll",
        ("s", "a.b"),
        "UnknownInterface",
    ),
    "reading without arguments": (PROPERTIES, "Get", ("",), "UnknownMethod"),
    "an unknown method": (PROPERTIES, "Put", ("",), "UnknownMethod"),
    "an unknown method of the interface": (LOG_CONTROL, "LogLevel", ("",), "UnknownInterface"),
    "a method of an unknown interface": ("a.b", "Get", ("",), "UnknownInterface"),
}

QT_MESSAGES = ("QDBusConnection: couldn't handle call to ", "Could not find slot ")
"""What Qt 6.8 logs for a call that matches no method."""


@pytest.mark.parametrize("interface, method, arguments, refusal", REFUSALS.values(), ids=REFUSALS)
def test_an_invalid_call_is_refused_with_an_error(
    service, client, interface, method, arguments, refusal
):
    with pytest.raises(BusError) as error:
        call(client, method, *arguments, interface=interface)
    assert error.value.name == f"{ERROR}.{refusal}"
    assert error.value.message
    assert proxy(client).Get(LOG_CONTROL, "LogLevel") == "debug"
    assert [line for line in service.log.take() if not line.startswith(QT_MESSAGES)] == []


def test_the_error_for_an_unknown_level_lists_the_levels(service, client):
    with pytest.raises(BusError) as error:
        call(client, "Set", *LEVEL, "verbose")
    assert error.value.message == f"The log level must be one of {', '.join(LEVELS)}"


@pytest.mark.parametrize(
    "arguments",
    [
        ("Get", "ss", "", "y" * 1_000_000),
        ("GetAll", "s", "y" * 1_000_000),
        ("Set", "ssv", LOG_CONTROL, "LogLevel", "y" * 1_000_000),
        ("Set", "ssv", LOG_CONTROL, "LogTarget", "y" * 1_000_000),
    ],
    ids=["a property", "an interface", "a level", "a target"],
)
def test_an_error_message_does_not_repeat_a_long_name(service, client, arguments):
    with pytest.raises(BusError) as refusal:
        call(client, *arguments)
    assert len(str(refusal.value)) < 400


# Introspection


def test_the_introspection_describes_the_properties(service, client):
    (text,) = call(client, "Introspect", "", interface=INTROSPECTABLE).values
    interfaces = {node.get("name"): node for node in ElementTree.fromstring(text)}
    assert set(interfaces) == {LOG_CONTROL, PROPERTIES, INTROSPECTABLE, PEER}
    found = {
        node.get("name"): (
            node.get("type"),
            node.get("access"),
            {note.get("name"): note.get("value") for note in node},
        )
        for node in interfaces[LOG_CONTROL]
        if node.tag == "property"
    }
    privileged = {"org.freedesktop.systemd1.Privileged": "true"}
    assert found == {
        "LogLevel": ("s", "readwrite", privileged),
        "LogTarget": ("s", "readwrite", privileged),
        "SyslogIdentifier": ("s", "read", {}),
    }
    annotations = {
        note.get("name"): note.get("value") for note in interfaces[LOG_CONTROL].findall("annotation")
    }
    assert annotations == {"org.freedesktop.DBus.Property.EmitsChangedSignal": "false"}


def test_introspecting_the_parent_path_lists_the_object(service, client):
    reply = client.call("Introspect", interface=INTROSPECTABLE, path="/org/freedesktop")
    nodes = [node.get("name") for node in ElementTree.fromstring(reply.values[0]).iter("node")]
    assert "LogControl1" in nodes
