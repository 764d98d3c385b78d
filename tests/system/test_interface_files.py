"""The interface files: true to what the running service serves, and readable by standard tools."""

import re
import subprocess
import xml.etree.ElementTree as ElementTree
from pathlib import Path
from typing import Any

import pytest
from dbus.lowlevel import HANDLER_RESULT_NOT_YET_HANDLED, MESSAGE_TYPE_SIGNAL
from gi.repository import Gio, GLib

from interface_files import (
    FILES,
    SERVED,
    comments_of,
    dtd_of_introspection,
    interface_in,
    interface_of_file,
    methods_of,
    parse_comment,
    qdbusxml2cpp,
)
from samples import CALL
from sandbox.loop import LIMIT, wait_until
from sandbox.names import EVENTS, INTERFACE, LIFECYCLE, SERVICE, bus_name, object_path

every_file = pytest.mark.parametrize(
    "name", FILES, ids=[f"{name.rpartition('.')[2]} is in its file" for name in FILES]
)


def run(*command: object, cwd: Path) -> "subprocess.CompletedProcess[str]":
    return subprocess.run(
        [str(word) for word in command],
        cwd=cwd,
        capture_output=True,
        text=True,
        timeout=LIMIT,
        check=False,
    )


def validate(path: Path, cwd: Path) -> "subprocess.CompletedProcess[str]":
    return run(
        "xmllint", "--noout", "--nonet", "--dtdvalid", dtd_of_introspection(), path, cwd=cwd
    )


# True to what is served


def test_the_file_describes_the_methods_that_the_service_serves(service, client):
    served = interface_in(client.introspect(), INTERFACE)
    assert len(methods_of(served)) == 18
    assert methods_of(interface_of_file(INTERFACE)) == methods_of(served)


def test_the_lifecycle_file_describes_the_lifecycle_that_the_service_serves(service, client):
    served = interface_in(client.introspect(), LIFECYCLE)
    assert len(methods_of(served)) == 7
    assert methods_of(interface_of_file(LIFECYCLE)) == methods_of(served)


def test_files_of_methods_have_no_signals_and_that_of_events_no_methods():
    members = {name: {each.tag for each in interface_of_file(name)} for name in FILES}
    for tags in members.values():
        tags.discard(ElementTree.Comment)
    assert members == {INTERFACE: {"method"}, LIFECYCLE: {"method"}, EVENTS: {"signal"}}


def subscribe(client: Any, rule: str) -> list[Any]:
    """Every signal that comes from the service's object, once the bus has the match."""
    signals: list[Any] = []

    def receive(_connection: object, message: Any) -> int:
        if message.get_type() == MESSAGE_TYPE_SIGNAL and message.get_path() == object_path(
            SERVICE
        ):
            signals.append(message)
        return HANDLER_RESULT_NOT_YET_HANDLED

    client.connection.add_message_filter(receive)
    client.connection.add_match_string(rule)
    return signals


def test_an_event_that_was_sent_is_the_signal_of_the_events_file(service, client):
    interface = interface_of_file(EVENTS)
    (signal,) = interface.findall("signal")
    signals = subscribe(client, f"type='signal',interface='{EVENTS}'")
    client.add_action(CALL)
    wait_until(lambda: signals, "an event")
    (sent,) = signals
    assert (sent.get_interface(), sent.get_member(), sent.get_signature()) == (
        interface.get("name"),
        signal.get("name"),
        "".join(arg.get("type", "") for arg in signal.findall("arg")),
    )


def test_the_match_in_the_events_file_gets_that_event_and_no_other(service, client):
    text = FILES[EVENTS].read_text(encoding="utf-8")
    (rule,) = re.findall(r"^ *(type='signal',.*)$", text, re.MULTILINE)
    signals = subscribe(client, rule)
    client.add_action(CALL)
    client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=1, aom_type=1, addr=1)
    wait_until(lambda: signals, "the event that the rule names")
    client.round_trip()
    assert [str(each.get_args_list()[0]) for each in signals] == ["AOMKEY_PRESS_NTF"]


def test_the_file_names_the_bus_name_and_the_object_path():
    text = FILES[INTERFACE].read_text(encoding="utf-8")
    assert f"Service name: {bus_name(SERVICE)}\n" in text
    assert f"Object path:  {object_path(SERVICE)}\n" in text


def test_out_arguments_of_one_type_have_one_name():
    names: dict[str, set[str]] = {}
    for method in interface_of_file(INTERFACE).findall("method"):
        for arg in method.findall("arg"):
            if arg.get("direction") == "out":
                names.setdefault(arg.get("type", ""), set()).add(arg.get("name", ""))
    assert names == {
        "a(xsxsisiii)": {"keys"},
        "a(xsisssss)": {"actions"},
        "x": {"id"},
        "i": {"code"},
        "b": {"stored"},
        "a{s(si)}": {"capabilities"},
        "(si)": {"capability"},
    }


# Read by standard tools


@every_file
def test_a_file_is_valid_by_the_dtd(name, tmp_path):
    result = validate(FILES[name], tmp_path)
    assert result.returncode == 0, result.stderr


def test_the_dtd_refuses_the_attributes_of_the_served_text(tmp_path):
    result = validate(SERVED, tmp_path)
    assert result.returncode != 0
    assert "No declaration for attribute mapkey of element arg" in result.stderr


@every_file
def test_glib_reads_a_file(name):
    (interface,) = Gio.DBusNodeInfo.new_for_xml(FILES[name].read_text(encoding="utf-8")).interfaces
    element = interface_of_file(name)
    assert interface.name == name
    assert [
        (
            method.name,
            tuple((arg.name, arg.signature) for arg in method.in_args),
            tuple(arg.signature for arg in method.out_args),
        )
        for method in interface.methods
    ] == [each[:3] for each in methods_of(element)]
    assert [signal.name for signal in interface.signals] == [
        signal.get("name") for signal in element.findall("signal")
    ]


def test_glib_refuses_the_served_text(service, client):
    with pytest.raises(GLib.Error, match="attribute .value. invalid for element .arg."):
        Gio.DBusNodeInfo.new_for_xml(client.introspect())


def paragraphs(element: ElementTree.Element) -> list[str]:
    return ["".join(each.itertext()).strip() for each in element.findall("para")]


@every_file
def test_gdbus_codegen_makes_a_manual_with_nothing_left_blank(name, tmp_path):
    result = run("gdbus-codegen", "--generate-docbook", "manual", FILES[name], cwd=tmp_path)
    assert (result.returncode, result.stderr) == (0, "")
    manual = ElementTree.parse(tmp_path / f"manual-{name}.xml").getroot()
    assert manual.findtext("refnamediv/refpurpose")
    members = [
        each for each in manual.iter("refsect2") if each.get("role") in ("method", "signal")
    ]
    element = interface_of_file(name)
    assert len(members) == len(element.findall("method")) + len(element.findall("signal"))
    for member in members:
        title = member.findtext("title")
        assert all(paragraphs(member)) and paragraphs(member), title
        for item in member.iter("listitem"):
            assert all(paragraphs(item)) and paragraphs(item), title
    arguments = sum(len(list(member.iter("listitem"))) for member in members)
    assert arguments == len(list(element.iter("arg")))


@every_file
def test_qdbusxml2cpp_makes_a_proxy_without_a_warning(name, tmp_path):
    result = run(qdbusxml2cpp(), "-p", "proxy.h:", FILES[name], cwd=tmp_path)
    assert (result.returncode, result.stderr) == (0, "")
    proxy = (tmp_path / "proxy.h").read_text(encoding="utf-8")
    element = interface_of_file(name)
    for member in [*element.findall("method"), *element.findall("signal")]:
        assert re.search(rf"\b{member.get('name')}\(", proxy), member.get("name")


# Documented


@every_file
def test_every_method_signal_and_argument_is_documented(name):
    members = comments_of(interface_of_file(name))
    assert members
    for element, comment in members:
        assert comment.symbol == element.get("name")
        assert comment.text.endswith("."), comment
        assert list(comment.parameters) == [arg.get("name") for arg in element.findall("arg")]


@every_file
def test_the_interface_is_documented(name):
    root = ElementTree.fromstring(
        FILES[name].read_text(encoding="utf-8"),
        parser=ElementTree.XMLParser(target=ElementTree.TreeBuilder(insert_comments=True)),
    )
    before, interface = root
    assert (before.tag, interface.tag) == (ElementTree.Comment, "interface")
    comment = parse_comment(before.text or "")
    assert comment.symbol == name
    assert list(comment.parameters) == ["short_description"]
    assert comment.text.endswith(".")
