"""Events on the bus: names, arguments, types, order, and log lines."""

import re
from pathlib import Path

import pytest

from samples import CALL, MODULE_KEY, SET_KEY
from sandbox.names import EVENTS, SERVICE, bus_name, object_path
from sandbox.records import ACTION, KEY

PLACE = [("addr", "i"), ("aom_type", "i"), ("key_num", "i")]


class Scene:
    """A stored module key with its action, and a method that causes each event."""

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

    def reach_the_limit(self):
        self.settings.values["ProgKeysMax"] = "0"
        self.create_key()

    def add_action(self):
        self.client.add_action(CALL)

    def modify_action(self):
        self.client.modify_action(CALL._replace(idAction=self.id_action, label="other"))

    def delete_action(self):
        self.client.delete_action(self.id_action)

    def restore(self):
        self.client.restore_default()

    def set_label(self):
        self.client.set_label_state_for_key(self.key.idKey, 2)

    def set_icon(self):
        self.client.set_icon_state_for_key(self.key.idKey, 1, 2)

    def press(self):
        self.client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=5, aom_type=1, addr=2)


EVENTS_SENT = {
    "KEY_CREATE_NTF": (Scene.create_key, [("idKey", KEY)]),
    "KEY_MODIFY_NTF": (Scene.modify_key, [("idKey", KEY)]),
    "KEY_DELETE_NTF": (Scene.delete_key, [("idKey", "x")]),
    "KO_PROGKEYS_DB_FULL": (Scene.reach_the_limit, []),
    "ACTION_CREATE_NTF": (Scene.add_action, [("idAction", ACTION)]),
    "ACTION_MODIFY_NTF": (Scene.modify_action, [("idAction", ACTION)]),
    "ACTION_DELETE_NTF": (Scene.delete_action, [("idAction", "x")]),
    "DB_RESET_NTF": (Scene.restore, []),
    "AOM_SET_LABEL_PROPERTY_REC": (
        Scene.set_label,
        [*PLACE, ("label_state", "i"), ("label_str", "s")],
    ),
    "AOM_SET_ICON_PROPERTY_REC": (Scene.set_icon, [*PLACE, ("icon_x", "i"), ("icon_y", "i")]),
    "AOMKEY_PRESS_NTF": (Scene.press, [("key", KEY), ("action", ACTION), ("exists", "b")]),
}


@pytest.fixture
def scene(service, client, settings, events):
    the_scene = Scene(client, settings)
    events.take()
    service.log.take()
    return the_scene


@pytest.mark.parametrize("name", EVENTS_SENT)
def test_an_event_has_ordered_arguments_with_true_flags_and_one_debug_line(
    service, scene, events, name
):
    cause, arguments = EVENTS_SENT[name]
    cause(scene)
    sent = events.take()
    assert sent[-1].name == name
    assert [(each.name, each.signature) for each in sent[-1].arguments] == arguments
    assert all(argument.flag for argument in sent[-1].arguments)
    lines = [line for line in service.log.take("debug") if line.startswith("event ")]
    assert lines == [f"event {event.name} sent" for event in sent]


def test_the_documentation_lists_the_events_with_their_arguments():
    page = Path(__file__).resolve().parents[2] / "docs" / "events.md"
    _, _, rest = page.read_text(encoding="utf-8").partition("\n## Sent by the service\n")
    section, _, _ = rest.partition("\n## ")
    documented = {}
    for name, cell in re.findall(r"^\| `([A-Z_]+)` \| (.*?) \|", section, re.M):
        words = re.findall(r"`(.+?)`", cell)
        documented[name] = list(zip(words[::2], words[1::2]))
    assert documented == {name: arguments for name, (_, arguments) in EVENTS_SENT.items()}


def test_a_sent_event_is_not_logged_at_level_6(start, client, events, settings):
    service = start(log_level=6)
    scene = Scene(client, settings)
    events.take()
    service.log.take()
    scene.press()
    scene.delete_action()
    assert [event.name for event in events.take()] == [
        "AOMKEY_PRESS_NTF",
        "KEY_DELETE_NTF",
        "ACTION_DELETE_NTF",
    ]
    assert service.log.take() == []


def test_an_event_is_a_signal_of_the_events_interface_from_the_module_object(scene, client):
    signals = []

    def receive(name, _arguments, **where):
        signals.append((str(name), {str(each) for each in where.values()}))

    client.connection.add_signal_receiver(
        receive,
        dbus_interface=EVENTS,
        member_keyword="member",
        path_keyword="path",
        sender_keyword="sender",
    )
    scene.delete_key()
    client.round_trip()
    owner = str(client.connection.get_name_owner(bus_name(SERVICE)))
    assert signals == [("KEY_DELETE_NTF", {"event", object_path(SERVICE), owner})]


def test_an_event_is_sent_after_the_write_and_before_the_reply(scene, client, events, database):
    rows = []
    events.on_event = lambda event: rows.append(
        (event.name, len(database.keys()), len(database.actions()))
    )
    client.send("deleteAction", "x", scene.id_action).wait()
    # At the first event, the action's row is already deleted.
    assert rows == [("KEY_DELETE_NTF", 0, 1), ("ACTION_DELETE_NTF", 0, 1)]
