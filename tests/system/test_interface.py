"""The interface on the bus: methods, types, introspection, and calls that do not fit."""

import os
import re
import subprocess
import xml.etree.ElementTree as ElementTree

import pytest

from database import RESERVED_ACTION
from introspection import METHODS
from samples import CALL, SET_KEY
from sandbox.client import BusError
from sandbox.loop import LIMIT
from sandbox.names import INTERFACE, LIFECYCLE, SERVICE, bus_name, object_path
from sandbox.records import ACTION, KEY

MAP = "a{s(si)}"


@pytest.fixture
def key(client, action):
    stored = SET_KEY._replace(idAction=action.idAction, aom_type=1)
    return stored._replace(idKey=client.create_programmable_key(stored))


# Replies

CALLS = [
    ("getAllProgrammableKeys", "", lambda key, action: [], f"a{KEY}", lambda key, action: [key]),
    (
        "getProgrammableKeysByContainer",
        "s",
        lambda key, action: ["main"],
        f"a{KEY}",
        lambda key, action: [key],
    ),
    (
        "createProgrammableKey",
        KEY,
        lambda key, action: [key],
        "x",
        lambda key, action: key.idKey + 1,
    ),
    ("modifyProgrammableKey", KEY, lambda key, action: [key], "i", lambda key, action: 0),
    (
        "changeProgrammableKeysPosition",
        "a{ii}",
        lambda key, action: [{key.idKey: 1}],
        "b",
        lambda key, action: True,
    ),
    ("deleteProgrammableKey", "x", lambda key, action: [key.idKey], "i", lambda key, action: 0),
    (
        "getProgrammableKey",
        "x",
        lambda key, action: [key.idKey],
        f"a{KEY}",
        lambda key, action: [key],
    ),
    (
        "getAllActions",
        "",
        lambda key, action: [],
        f"a{ACTION}",
        lambda key, action: [RESERVED_ACTION, action],
    ),
    (
        "addAction",
        ACTION,
        lambda key, action: [action],
        "x",
        lambda key, action: action.idAction + 1,
    ),
    ("modifyAction", ACTION, lambda key, action: [action], "i", lambda key, action: 0),
    ("deleteAction", "x", lambda key, action: [action.idAction], "i", lambda key, action: 0),
    (
        "getAction",
        "x",
        lambda key, action: [action.idAction],
        f"a{ACTION}",
        lambda key, action: [action],
    ),
    (
        "setIconStateForKey",
        "xii",
        lambda key, action: [key.idKey, 1, 2],
        "i",
        lambda key, action: 0,
    ),
    ("setLabelStateForKey", "xi", lambda key, action: [key.idKey, 1], "i", lambda key, action: 0),
    ("getCapabilities", "", lambda key, action: [], MAP, lambda key, action: {}),
    ("getCapabilities", "i", lambda key, action: [3], MAP, lambda key, action: {}),
    ("getCapability", "s", lambda key, action: ["any"], "(si)", lambda key, action: ("", 0)),
    ("getCapability", "is", lambda key, action: [3, "any"], "(si)", lambda key, action: ("", 0)),
]


@pytest.mark.parametrize(
    "method, signature, arguments, returns, value",
    CALLS,
    ids=[f"{name}({types})" for name, types, *_ in CALLS],
)
def test_each_method_answers_with_its_type_and_value(
    client, action, key, method, signature, arguments, returns, value
):
    reply = client.call(method, signature, *arguments(key, action))
    assert reply.signature == returns
    assert reply.values == (value(key, action),)


def test_a_call_that_wants_no_reply_is_carried_out(service, client, events, database):
    message = client.message("addAction", ACTION, CALL)
    message.set_no_reply(True)
    client.connection.send_message(message)
    assert [event.name for event in events.take()] == ["ACTION_CREATE_NTF"]
    assert len(database.actions()) == 2


def test_a_call_without_an_interface_is_answered(service, client):
    assert client.call("getAllActions", interface=None).values == ([RESERVED_ACTION],)


# Introspection


@pytest.fixture
def interface(service, client):
    """The element of the published interface."""
    root = ElementTree.fromstring(client.introspect())
    (element,) = [
        element for element in root.findall("interface") if element.get("name") == INTERFACE
    ]
    return element


@pytest.fixture
def text(service, client) -> list[str]:
    """The lines of the published interface within the introspection text."""
    lines = client.introspect().splitlines()
    begin = next(number for number, line in enumerate(lines) if f'"{INTERFACE}"' in line)
    end = next(
        number for number, line in enumerate(lines) if number > begin and "</interface>" in line
    )
    return lines[begin : end + 1]


def test_introspection_gives_the_methods_in_order(interface):
    assert [element.tag for element in interface] == ["method"] * 18
    assert [element.attrib for element in interface] == [
        {"name": name} for name, _inputs, _output in METHODS
    ]


@pytest.mark.parametrize(
    "position",
    range(len(METHODS)),
    ids=[
        f"{name}({''.join(argument.type for argument in inputs)})"
        for name, inputs, _output in METHODS
    ],
)
def test_introspection_gives_each_argument_with_its_attributes_and_annotation(interface, position):
    _name, inputs, output = METHODS[position]
    method = interface[position]
    expected = [element for argument in (*inputs, output) for element in argument.elements]
    assert [(element.tag, element.attrib) for element in method] == expected


def test_introspection_text_is_laid_out_by_line(text):
    depth = {"interface": 2, "method": 4, "arg": 6, "annotation": 6}
    for line in text:
        match = re.fullmatch(r'( *)</?(\w+)( [^<>]*")?( ?/?)>', line)
        assert match, f"not one element on its line: {line!r}"
        indent, tag, _attributes, end = match.groups()
        assert len(indent) == depth[tag], line
        if "</" not in line:
            assert end == (" /" if tag in ("arg", "annotation") else " "), line


def test_introspection_text_writes_attributes_in_their_order(text):
    order = ["direction", "type", "value", "name", "format", "mapkey"]
    for line in (line for line in text if "<arg " in line):
        names = re.findall(r'(\w+)="', line)
        assert names == [name for name in order if name in names], line
    for line in (line for line in text if "<annotation " in line):
        assert re.findall(r'(\w+)="', line) == ["value", "name"], line
    assert '    <method name="getAction" >' in text
    assert '      <arg direction="in" type="x" value="qlonglong" name="idAction" />' in text


def test_gdbus_prints_the_introspection_as_xml_that_parses(service, bus):
    printed = subprocess.run(
        [
            "gdbus",
            "introspect",
            "--xml",
            "--system",
            "-d",
            bus_name(SERVICE),
            "-o",
            object_path(SERVICE),
        ],
        env={**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": bus.address},
        capture_output=True,
        text=True,
        timeout=LIMIT,
        check=True,
    ).stdout
    root = ElementTree.fromstring(printed)
    (element,) = [
        element for element in root.findall("interface") if element.get("name") == INTERFACE
    ]
    assert [method.get("name") for method in element] == [
        name for name, _inputs, _output in METHODS
    ]


def test_the_lifecycle_is_published_beside_the_interface(service, client):
    root = ElementTree.fromstring(client.introspect())
    (element,) = [
        element for element in root.findall("interface") if element.get("name") == LIFECYCLE
    ]
    found = {
        method.get("name"): [arg.get("type") for arg in method.findall("arg")]
        for method in element
    }
    assert found == {
        "restoreDefault": ["b"],
        "restoreFactory": ["b"],
        "presentationLoaded": [],
        "presentationStop": [],
        "preSaveForSaveRestore": ["b"],
        "postRestoreForSaveRestore": ["b"],
        "stop": ["b"],
    }


# Calls that do not fit

WRONG_CALLS = [
    ("getAllProgrammableKeys", "s", ["more"]),
    ("getProgrammableKeysByContainer", "x", [1]),
    ("getProgrammableKeysByContainer", "", []),
    ("createProgrammableKey", "(xssxisiii)", [(-1, "", "main", 1, 4, "", 0, 0, 0)]),
    ("createProgrammableKey", "(xsxsisii)", [SET_KEY[:8]]),
    ("createProgrammableKey", "(xsxsisiiii)", [(*SET_KEY, 1)]),
    ("createProgrammableKey", "xsxsisiii", SET_KEY),
    ("createProgrammableKey", "v", ["key"]),
    ("modifyProgrammableKey", "(isisisiii)", [SET_KEY]),
    ("modifyProgrammableKey", f"a{KEY}", [[SET_KEY]]),
    ("changeProgrammableKeysPosition", "a{xi}", [{1: 2}]),
    ("changeProgrammableKeysPosition", "a{is}", [{1: "2"}]),
    ("changeProgrammableKeysPosition", "ai", [[1, 2]]),
    ("deleteProgrammableKey", "i", [1]),
    ("deleteProgrammableKey", "t", [1]),
    ("getProgrammableKey", "s", ["1"]),
    ("getProgrammableKey", "v", [1]),
    ("getAllActions", "i", [1]),
    ("addAction", "(xssissss)", [(-1, "", "", 1, "", "", "", "")]),
    ("addAction", KEY, [SET_KEY]),
    ("addAction", "", []),
    ("modifyAction", f"{ACTION}{ACTION}", [CALL, CALL]),
    ("modifyAction", "(xsisssssv)", [(*CALL, "more")]),
    ("deleteAction", "d", [1.0]),
    ("deleteAction", "i", [1]),
    ("getAction", "xx", [1, 1]),
    ("getAction", "o", ["/1"]),
    ("setIconStateForKey", "iii", [1, 1, 1]),
    ("setIconStateForKey", "xi", [1, 1]),
    ("setLabelStateForKey", "xs", [1, "1"]),
    ("setLabelStateForKey", "xii", [1, 1, 1]),
    ("getCapabilities", "s", ["any"]),
    ("getCapabilities", "x", [1]),
    ("getCapability", "", []),
    ("getCapability", "si", ["any", 1]),
    ("getCapability", "i", [1]),
]


@pytest.mark.parametrize(
    "method, signature, arguments",
    WRONG_CALLS,
    ids=[f"{name}({types})" for name, types, _arguments in WRONG_CALLS],
)
def test_a_wrong_signature_is_answered_by_an_error_and_harms_nothing(
    service, client, events, database, action, key, method, signature, arguments
):
    before = database.actions(), database.keys()
    events.take()
    with pytest.raises(BusError):
        client.call(method, signature, *arguments)
    assert events.take() == []
    assert (database.actions(), database.keys()) == before
    assert client.get_all_programmable_keys() == [key]
    assert service.running


def test_the_wrong_calls_try_every_method():
    assert {name for name, _types, _arguments in WRONG_CALLS} == {
        name for name, _inputs, _output in METHODS
    }


def test_a_thousand_wrong_calls_at_once_are_each_answered_by_an_error(service, client):
    pending = [client.send("getAction", "s", str(number)) for number in range(1000)]
    for reply in pending:
        with pytest.raises(BusError):
            reply.wait()
    assert client.get_all_actions() == [RESERVED_ACTION]


@pytest.mark.parametrize(
    "method, where",
    [
        ("aomKeyPressed", {}),
        ("isProgrammableKeyRemovable", {}),
        ("deleteLater", {}),
        ("getallactions", {}),
        ("restoreDefault", {}),
        ("getAllActions", {"interface": LIFECYCLE}),
        ("getAllActions", {"interface": f"{INTERFACE}2"}),
        ("getAllActions", {"path": "/"}),
        ("getAllActions", {"path": object_path("Another")}),
        ("getAllActions", {"path": f"{object_path(SERVICE)}/below"}),
        ("deploy", {"interface": LIFECYCLE}),
    ],
    ids=lambda value: value
    if isinstance(value, str)
    else "at " + ", ".join(value.values())
    if value
    else "",
)
def test_what_is_not_published_cannot_be_called(service, client, action, method, where):
    with pytest.raises(BusError):
        client.call(method, **where)
    assert client.get_all_actions() == [RESERVED_ACTION, action]
