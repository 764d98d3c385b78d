"""Events as they stand on the bus: names, arguments, types, order, and the lines about them."""

import pytest

from samples import CALL, MODULE_KEY, SET_KEY
from sandbox.names import EVENTS, SERVICE, object_path
from sandbox.records import ACTION, KEY, Key

INTS = ("i",) * 4
PLACE = ("addr", "aom_type", "key_num")


class Scene:
    """Provokes each event by an ordinary call, on one stored module key and its action."""

    def __init__(self, client, settings):
        self.client = client
        self.settings = settings
        self.id_action = client.add_action(CALL)
        self.key = MODULE_KEY._replace(idAction=self.id_action)
        self.key = self.key._replace(idKey=client.create_programmable_key(self.key))

    def create_key(self):
        self.client.create_programmable_key(SET_KEY._replace(idAction=self.id_action))

    def modify_key(self):
        self.client.modify_programmable_key(self.key)

    def delete_key(self):
        self.client.delete_programmable_key(self.key.idKey)

    def fill(self):
        self.settings.values["ProgKeysMax"] = "0"
        self.create_key()

    def add_action(self):
        self.client.add_action(CALL)

    def modify_action(self):
        self.client.modify_action(CALL._replace(idAction=self.id_action, label="other"))

    def delete_action(self):
        self.client.delete_programmable_key(self.key.idKey)
        self.client.delete_action(self.id_action)

    def reset(self):
        self.client.restore_default()

    def set_label(self):
        self.client.set_label_state_for_key(self.key.idKey, 2)

    def set_icon(self):
        self.client.set_icon_state_for_key(self.key.idKey, 1, 2)

    def press(self):
        self.client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=5, aom_type=1, addr=2)


PROVOKED = {
    "KEY_CREATE_NTF": (Scene.create_key, ("idKey",), (KEY,)),
    "KEY_MODIFY_NTF": (Scene.modify_key, ("idKey",), (KEY,)),
    "KEY_DELETE_NTF": (Scene.delete_key, ("idKey",), ("x",)),
    "KO_PROGKEYS_DB_FULL": (Scene.fill, (), ()),
    "ACTION_CREATE_NTF": (Scene.add_action, ("idAction",), (ACTION,)),
    "ACTION_MODIFY_NTF": (Scene.modify_action, ("idAction",), (ACTION,)),
    "ACTION_DELETE_NTF": (Scene.delete_action, ("idAction",), ("x",)),
    "DB_RESET_NTF": (Scene.reset, (), ()),
    "AOM_SET_LABEL_PROPERTY_REC": (
        Scene.set_label,
        (*PLACE, "label_state", "label_str"),
        (*INTS, "s"),
    ),
    "AOM_SET_ICON_PROPERTY_REC": (Scene.set_icon, (*PLACE, "icon_x", "icon_y"), (*INTS, "i")),
    "AOMKEY_PRESS_NTF": (Scene.press, ("key", "action", "exists"), (KEY, ACTION, "b")),
}


@pytest.fixture
def scene(service, client, settings, events):
    provoker = Scene(client, settings)
    events.take()
    service.log.take()
    return provoker


@pytest.mark.parametrize(
    "name, provoke, names, signatures",
    [(name, *rest) for name, rest in PROVOKED.items()],
    ids=PROVOKED,
)
def test_an_event_carries_its_arguments_in_order_each_of_its_type_and_flagged(
    scene, events, name, provoke, names, signatures
):
    provoke(scene)
    event = events.take()[-1]
    assert event.name == name
    assert tuple(argument.name for argument in event.arguments) == names
    assert tuple(argument.signature for argument in event.arguments) == signatures
    assert all(argument.flag for argument in event.arguments)


@pytest.mark.parametrize(
    "name, provoke", [(name, rest[0]) for name, rest in PROVOKED.items()], ids=PROVOKED
)
def test_a_sent_event_writes_exactly_one_debug_line_at_level_7(
    service, scene, events, name, provoke
):
    provoke(scene)
    names = [event.name for event in events.take()]
    debugged = [text for text in service.log.take("debug") if text.startswith("event ")]
    assert debugged == [f"event {sent} sent" for sent in names]
    assert debugged[-1] == f"event {name} sent"
    assert service.log.texts("error") == []


def test_a_sent_event_writes_nothing_at_level_6(start, client, events, settings):
    service = start(log_level=6)
    scene = Scene(client, settings)
    service.log.take()
    scene.press()
    scene.delete_action()
    assert [event.name for event in events.take()][-3:] == [
        "AOMKEY_PRESS_NTF",
        "KEY_DELETE_NTF",
        "ACTION_DELETE_NTF",
    ]
    assert service.log.take() == []


def test_the_reset_and_the_full_database_carry_no_arguments_at_all(scene, events):
    scene.fill()
    scene.reset()
    assert [(event.name, event.arguments) for event in events.take()] == [
        ("KO_PROGKEYS_DB_FULL", ()),
        ("DB_RESET_NTF", ()),
    ]


def test_the_argument_id_key_is_the_record_when_created_and_the_bare_id_when_deleted(
    scene, events
):
    scene.delete_key()
    scene.create_key()
    deleted, created = (event.values["idKey"] for event in events.take())
    assert deleted == scene.key.idKey
    assert created == Key(scene.key.idKey + 1, *SET_KEY[1:2], scene.id_action, *SET_KEY[3:])


def test_an_event_is_a_signal_of_the_events_interface_from_the_object_of_the_module(
    scene, client, events
):
    signals = []
    client.connection.add_signal_receiver(
        lambda *body, **where: signals.append(
            (str(body[0]), {name: str(value) for name, value in where.items()})
        ),
        dbus_interface=EVENTS,
        interface_keyword="interface",
        member_keyword="member",
        path_keyword="path",
        sender_keyword="sender",
    )
    scene.delete_key()
    client.round_trip()
    owner = client.connection.get_name_owner("com.velmora.Tessaro.ZelProgrammableKeys")
    where = {
        "interface": EVENTS,
        "member": "event",
        "path": object_path(SERVICE),
        "sender": str(owner),
    }
    assert signals == [("KEY_DELETE_NTF", where)]


def test_an_event_is_sent_after_its_row_was_written_and_before_the_call_is_answered(
    scene, client, events, database
):
    rows = []
    events.on_event = lambda event: rows.append(
        (event.name, len(database.keys()), len(database.actions()))
    )
    reply = client.send("deleteAction", "x", scene.id_action)
    reply.wait()
    # Both rows are gone when the first of the two events comes: the action's is deleted first.
    assert rows == [("KEY_DELETE_NTF", 0, 1), ("ACTION_DELETE_NTF", 0, 1)]
