"""The published interface files match the service, and standard tools can read them."""

import re
import subprocess
import xml.etree.ElementTree as ElementTree
from pathlib import Path
from typing import Any

import pytest
from dbus.lowlevel import HANDLER_RESULT_NOT_YET_HANDLED, MESSAGE_TYPE_SIGNAL

from interface_files import (
    CHECKOUT,
    FILES,
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
    "name", FILES, ids=[f"the file of {name.rpartition('.')[2]}" for name in FILES]
)


def run(*command: object, cwd: Path) -> None:
    """Runs a tool. It must succeed and print no errors."""
    result = subprocess.run(
        [str(word) for word in command],
        cwd=cwd,
        capture_output=True,
        text=True,
        timeout=LIMIT,
        check=False,
    )
    assert (result.returncode, result.stderr) == (0, "")


# Comparison with the service


@pytest.mark.parametrize(
    "name, count", [(INTERFACE, 18), (LIFECYCLE, 7)], ids=["the interface", "the lifecycle"]
)
def test_a_file_has_the_methods_that_the_service_publishes(service, client, name, count):
    methods = methods_of(interface_in(client.introspect(), name))
    assert len(methods) == count
    assert methods_of(interface_of_file(name)) == methods


def test_the_documentation_lists_the_methods_with_their_arguments():
    page = (CHECKOUT / "docs" / "bus-interface.md").read_text(encoding="utf-8")
    _, _, rest = page.partition("\n## Methods\n")
    section, _, _ = rest.partition("\n## ")
    rows = re.findall(r"^\| `(\w+)` \| (.*?) ?\| `(.+?)` \|", section, re.M)
    documented = [
        (name, tuple(map(tuple, re.findall(r"`(.+?)` (\w+)", inputs))), output)
        for name, inputs, output in rows
    ]
    assert sorted(documented) == sorted(
        (method.name, tuple((type_, name) for name, type_ in method.inputs), *method.outputs)
        for method in methods_of(interface_of_file(INTERFACE))
    )


def test_an_event_is_the_signal_in_the_file_and_the_match_rule_in_the_file_selects_it(
    service, client
):
    signals: list[Any] = []

    def receive(_connection: object, message: Any) -> int:
        if message.get_type() == MESSAGE_TYPE_SIGNAL and message.get_path() == object_path(SERVICE):
            signals.append(message)
        return HANDLER_RESULT_NOT_YET_HANDLED

    text = FILES[EVENTS].read_text(encoding="utf-8")
    (rule,) = re.findall(r"^ *(type='signal',.*)$", text, re.MULTILINE)
    client.connection.add_message_filter(receive)
    client.connection.add_match_string(rule)
    client.add_action(CALL)
    client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=1, aom_type=1, addr=1)
    wait_until(lambda: signals, "the event that the rule names")
    client.round_trip()
    (sent,) = signals
    assert str(sent.get_args_list()[0]) == "AOMKEY_PRESS_NTF"
    interface = interface_of_file(EVENTS)
    (signal,) = interface.findall("signal")
    assert (sent.get_interface(), sent.get_member(), sent.get_signature()) == (
        interface.get("name"),
        signal.get("name"),
        "".join(arg.get("type", "") for arg in signal.findall("arg")),
    )


def test_the_file_names_the_service_and_the_object_path():
    text = FILES[INTERFACE].read_text(encoding="utf-8")
    assert f"Service name: {bus_name(SERVICE)}\n" in text
    assert f"Object path:  {object_path(SERVICE)}\n" in text


# Standard tools


@every_file
def test_a_file_is_valid_according_to_the_dtd(name, tmp_path):
    dtd = dtd_of_introspection()
    run("xmllint", "--noout", "--nonet", "--dtdvalid", dtd, FILES[name], cwd=tmp_path)


def paragraphs(element: ElementTree.Element) -> list[str]:
    return ["".join(each.itertext()).strip() for each in element.findall("para")]


@every_file
def test_gdbus_codegen_generates_a_complete_manual(name, tmp_path):
    run("gdbus-codegen", "--generate-docbook", "manual", FILES[name], cwd=tmp_path)
    manual = ElementTree.parse(tmp_path / f"manual-{name}.xml").getroot()
    assert manual.findtext("refnamediv/refpurpose")
    members = [
        each for each in manual.iter("refsect2") if each.get("role") in ("method", "signal")
    ]
    element = interface_of_file(name)
    assert len(members) == len(element.findall("method")) + len(element.findall("signal"))
    items = [item for member in members for item in member.iter("listitem")]
    assert len(items) == len(list(element.iter("arg")))
    for each in (*members, *items):
        assert all(paragraphs(each)) and paragraphs(each), "".join(each.itertext())


@every_file
def test_qdbusxml2cpp_generates_a_proxy_without_a_warning(name, tmp_path):
    run(qdbusxml2cpp(), "-p", "proxy.h:", FILES[name], cwd=tmp_path)
    proxy = (tmp_path / "proxy.h").read_text(encoding="utf-8")
    element = interface_of_file(name)
    for member in [*element.findall("method"), *element.findall("signal")]:
        assert re.search(rf"\b{member.get('name')}\(", proxy), member.get("name")


# Documentation


@every_file
def test_the_interface_and_each_method_signal_and_argument_are_documented(name):
    parser = ElementTree.XMLParser(target=ElementTree.TreeBuilder(insert_comments=True))
    before, _interface = ElementTree.fromstring(FILES[name].read_bytes(), parser=parser)
    comment = parse_comment(before.text or "")
    assert (comment.symbol, list(comment.parameters)) == (name, ["short_description"])
    assert comment.text.endswith(".")
    members = comments_of(interface_of_file(name))
    assert members
    for element, comment in members:
        assert comment.symbol == element.get("name")
        assert comment.text.endswith("."), comment
        assert list(comment.parameters) == [arg.get("name") for arg in element.findall("arg")]


def test_all_result_arguments_of_a_type_have_the_same_name():
    names: dict[str, set[str]] = {}
    for arg in interface_of_file(INTERFACE).iter("arg"):
        if arg.get("direction") == "out":
            names.setdefault(arg.get("type", ""), set()).add(arg.get("name", ""))
    assert all(len(each) == 1 for each in names.values()), names
