"""The interface on the bus: methods, types, introspection, and invalid calls."""

import os
import subprocess
import xml.etree.ElementTree as ElementTree

import pytest

from database import RESERVED_ACTION
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


# Methods


def test_each_method_returns_a_value_of_its_type(client, action, key):
    id_key, id_action = key.idKey, action.idAction
    calls = [
        ("getAllProgrammableKeys", "", [], f"a{KEY}", [key]),
        ("getProgrammableKeysByContainer", "s", ["main"], f"a{KEY}", [key]),
        ("createProgrammableKey", KEY, [key], "x", id_key + 1),
        ("modifyProgrammableKey", KEY, [key], "i", 0),
        ("changeProgrammableKeysPosition", "a{ii}", [{id_key: 4}], "b", True),
        ("getProgrammableKey", "x", [id_key], f"a{KEY}", [key]),
        ("getAllActions", "", [], f"a{ACTION}", [RESERVED_ACTION, action]),
        ("addAction", ACTION, [action], "x", id_action + 1),
        ("modifyAction", ACTION, [action], "i", 0),
        ("getAction", "x", [id_action], f"a{ACTION}", [action]),
        ("setIconStateForKey", "xii", [id_key, 1, 2], "i", 0),
        ("setLabelStateForKey", "xi", [id_key, 1], "i", 0),
        ("deleteProgrammableKey", "x", [id_key], "i", 0),
        ("deleteAction", "x", [id_action], "i", 0),
        ("getCapabilities", "", [], MAP, {}),
        ("getCapabilities", "i", [3], MAP, {}),
        ("getCapability", "s", ["any"], "(si)", ("", 0)),
        ("getCapability", "is", [3, "any"], "(si)", ("", 0)),
    ]
    for method, signature, arguments, returns, value in calls:
        reply = client.call(method, signature, *arguments)
        assert (reply.signature, reply.values) == (returns, (value,)), method


def test_a_call_that_expects_no_reply_is_executed(service, client, events, database):
    message = client.message("addAction", ACTION, CALL)
    message.set_no_reply(True)
    client.connection.send_message(message)
    assert [event.name for event in events.take()] == ["ACTION_CREATE_NTF"]
    assert len(database.actions()) == 2


def test_a_call_without_an_interface_is_answered(service, client):
    assert client.call("getAllActions", interface=None).values == ([RESERVED_ACTION],)


# Introspection


def annotated(argument, value, where):
    name = f"com.trolltech.QtDBus.QtTypeName.{where}0"
    return f'{argument}\n<annotation value="{value}" name="{name}" />'


ID_KEY = '<arg direction="in" type="x" value="qlonglong" name="idKey" />'
ID_ACTION = '<arg direction="in" type="x" value="qlonglong" name="idAction" />'
LIST_ID = '<arg direction="in" type="i" value="int" name="listId" />'
NAME = '<arg direction="in" type="s" value="QString" name="name" />'
CONTAINER = '<arg direction="in" type="s" value="QString" name="container" />'
ICON_X = '<arg direction="in" type="i" value="int" name="icon_x" />'
ICON_Y = '<arg direction="in" type="i" value="int" name="icon_y" />'
STATE = '<arg direction="in" type="i" value="int" name="state" />'
IN_KEY = annotated('<arg direction="in" type="(xsxsisiii)" value="Key" name="k" />', "Key", "In")
IN_ACTION = annotated(
    '<arg direction="in" type="(xsisssss)" value="Action" name="action" />', "Action", "In"
)
IN_POSITIONS = annotated(
    '<arg direction="in" type="a{ii}" value="int" name="mapId" format="map" mapkey="int" />',
    "QMapIntInt",
    "In",
)
OUT_ID = '<arg direction="out" type="x" value="qlonglong" />'
OUT_CODE = '<arg direction="out" type="i" value="int" />'
OUT_BOOL = '<arg direction="out" type="b" value="bool" />'
OUT_KEYS = annotated(
    '<arg direction="out" type="a(xsxsisiii)" value="Key" format="list" />', "ListKey", "Out"
)
OUT_ACTIONS = annotated(
    '<arg direction="out" type="a(xsisssss)" value="Action" format="list" />', "ListAction", "Out"
)
OUT_CAPABILITIES = annotated(
    '<arg direction="out" type="a{s(si)}" value="Capability" format="map" mapkey="QString" />',
    "MapQStringCapability",
    "Out",
)
OUT_CAPABILITY = annotated(
    '<arg direction="out" type="(si)" value="Capability" />', "Capability", "Out"
)

METHODS = [
    ("getAllProgrammableKeys", OUT_KEYS),
    ("getProgrammableKeysByContainer", CONTAINER, OUT_KEYS),
    ("createProgrammableKey", IN_KEY, OUT_ID),
    ("modifyProgrammableKey", IN_KEY, OUT_CODE),
    ("changeProgrammableKeysPosition", IN_POSITIONS, OUT_BOOL),
    ("deleteProgrammableKey", ID_KEY, OUT_CODE),
    ("getProgrammableKey", ID_KEY, OUT_KEYS),
    ("getAllActions", OUT_ACTIONS),
    ("addAction", IN_ACTION, OUT_ID),
    ("modifyAction", IN_ACTION, OUT_CODE),
    ("deleteAction", ID_ACTION, OUT_CODE),
    ("getAction", ID_ACTION, OUT_ACTIONS),
    ("setIconStateForKey", ID_KEY, ICON_X, ICON_Y, OUT_CODE),
    ("setLabelStateForKey", ID_KEY, STATE, OUT_CODE),
    ("getCapabilities", OUT_CAPABILITIES),
    ("getCapabilities", LIST_ID, OUT_CAPABILITIES),
    ("getCapability", NAME, OUT_CAPABILITY),
    ("getCapability", LIST_ID, NAME, OUT_CAPABILITY),
]


def test_the_introspection_text_has_exactly_the_methods_of_the_interface(service, client):
    expected = [f'  <interface name="{INTERFACE}" >']
    for name, *arguments in METHODS:
        elements = "\n".join(arguments).splitlines()
        expected += [f'    <method name="{name}" >', *(f"      {each}" for each in elements)]
        expected += ["    </method>"]
    lines = client.introspect().splitlines()
    begin = lines.index(expected[0])
    end = lines.index("  </interface>", begin)
    assert lines[begin:end] == expected


def test_gdbus_reads_the_introspection_text(service, bus):
    command = ["gdbus", "introspect", "--xml", "--system"]
    printed = subprocess.run(
        [*command, "-d", bus_name(SERVICE), "-o", object_path(SERVICE)],
        env={**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": bus.address},
        capture_output=True,
        text=True,
        timeout=LIMIT,
        check=True,
    ).stdout
    interfaces = {
        interface.get("name"): [method.get("name") for method in interface.findall("method")]
        for interface in ElementTree.fromstring(printed)
    }
    assert interfaces[INTERFACE] == [name for name, *_arguments in METHODS]
    assert interfaces[LIFECYCLE] == [
        "restoreDefault",
        "restoreFactory",
        "presentationLoaded",
        "presentationStop",
        "preSaveForSaveRestore",
        "postRestoreForSaveRestore",
        "stop",
    ]


# Invalid calls


def test_a_call_with_a_wrong_signature_returns_an_error_and_changes_nothing(
    service, client, events, database, action, key
):
    calls = [
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
        ("changeProgrammableKeysPosition", "ai", [[1, 2]]),
        ("deleteProgrammableKey", "i", [1]),
        ("getProgrammableKey", "s", ["1"]),
        ("getAllActions", "i", [1]),
        ("addAction", "(xssissss)", [(-1, "", "", 1, "", "", "", "")]),
        ("addAction", KEY, [SET_KEY]),
        ("modifyAction", f"{ACTION}{ACTION}", [CALL, CALL]),
        ("deleteAction", "d", [1.0]),
        ("getAction", "xx", [1, 1]),
        ("setIconStateForKey", "iii", [1, 1, 1]),
        ("setIconStateForKey", "xi", [1, 1]),
        ("setLabelStateForKey", "xii", [1, 1, 1]),
        ("getCapabilities", "s", ["any"]),
        ("getCapability", "si", ["any", 1]),
        ("getCapability", "i", [1]),
    ]
    assert {name for name, *_rest in calls} == {name for name, *_rest in METHODS}
    before = database.actions(), database.keys()
    events.take()
    for method, signature, arguments in calls:
        with pytest.raises(BusError):
            reply = client.call(method, signature, *arguments)
            pytest.fail(f"{method}({signature}) returned {reply}")
    assert events.take() == []
    assert (database.actions(), database.keys()) == before


def test_each_of_a_thousand_concurrent_invalid_calls_gets_an_error(service, client):
    pending = [client.send("getAction", "s", str(number)) for number in range(1000)]
    for reply in pending:
        with pytest.raises(BusError):
            reply.wait()
    assert client.get_all_actions() == [RESERVED_ACTION]


def test_a_method_that_is_not_published_cannot_be_called(service, client, action):
    for method, where in [
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
    ]:
        with pytest.raises(BusError):
            client.call(method, **where)
            pytest.fail(f"{method} can be called at {where}")
    assert client.get_all_actions() == [RESERVED_ACTION, action]
