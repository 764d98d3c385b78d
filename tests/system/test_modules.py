"""Keys of add-on modules: presses, icons and labels."""

import dbus
import pytest

from samples import CALL, MODULE_KEY, SET_KEY, icon_set, label_set, module_key_pressed, sent
from sandbox.records import Action, Key

PRESS = "AOM_KEY_PRESS_EVENT"
PLACE = {"aom_key_num": 5, "aom_type": 1, "addr": 2}


def bad_argument(name):
    return f"Argument {name} passed to event AOM_KEY_PRESS_EVENT has got an invalid value."


def not_a_module_key(method, id_key):
    return f"In {method}, not an aom key, id[{id_key}]"


@pytest.fixture
def store_key(service, client, events):
    """Stores a key and takes what that sent and logged."""

    def store(key):
        stored = key._replace(idKey=client.create_programmable_key(key))
        events.take()
        service.log.take()
        return stored

    return store


@pytest.fixture
def key(action, store_key) -> Key:
    """A stored module key at the place that `PLACE` names."""
    return store_key(MODULE_KEY._replace(idAction=action.idAction))


# Presses


def test_a_press_of_a_stored_key_is_told_with_the_key_and_its_action(
    service, client, events, action, key
):
    client.send_event(PRESS, **PLACE)
    assert events.take() == [module_key_pressed(key, action, exists=True)]
    assert service.log.take() == sent("AOMKEY_PRESS_NTF")


def test_a_press_of_an_unprogrammed_key_is_told_with_its_place_alone(service, client, events):
    events.take()
    client.send_event(PRESS, **PLACE)
    pressed = Key(-1, "", -1, "", 5, "", 1, 1, 2)
    assert events.take() == [
        module_key_pressed(pressed, Action(-1, "", 0, "", "", "", "", ""), exists=False)
    ]


@pytest.mark.parametrize(
    "other",
    [{"aom_key_num": 6}, {"aom_type": 2}, {"addr": 3}],
    ids=["another number", "another module type", "another address"],
)
def test_a_press_at_another_place_does_not_find_the_key(client, events, key, other):
    place = {**PLACE, **other}
    client.send_event(PRESS, **place)
    pressed = Key(
        type=1, position=place["aom_key_num"], aom_type=place["aom_type"], aom_addr=place["addr"]
    )
    assert events.take() == [module_key_pressed(pressed, Action(), exists=False)]


@pytest.mark.parametrize("type_of_key", [0, 2, -1], ids=lambda number: f"type {number}")
def test_a_key_of_another_type_at_the_place_is_not_found_by_a_press(
    client, events, action, store_key, type_of_key
):
    store_key(MODULE_KEY._replace(idAction=action.idAction, type=type_of_key))
    client.send_event(PRESS, **PLACE)
    (event,) = events.take()
    assert event.values["exists"] is False
    assert event.values["key"] == Key(type=1, position=5, aom_type=1, aom_addr=2)


def test_the_first_of_several_keys_at_the_place_is_told(client, events, action, key, store_key):
    store_key(key._replace(icon="later"))
    client.send_event(PRESS, **PLACE)
    assert events.take() == [module_key_pressed(key, action, exists=True)]


def test_a_press_of_a_key_without_its_action_is_logged_and_reported_with_a_default_action(
    service, client, events, database, action, key
):
    database.execute(f"DELETE FROM ACTION WHERE idAction = {action.idAction}")
    client.send_event(PRESS, **PLACE)
    assert events.take() == [module_key_pressed(key, Action(), exists=True)]
    assert service.log.take("error") == [f"No action found for key of id {action.idAction}"]


def test_a_press_writes_nothing(client, events, database, key):
    before = database.actions(), database.keys()
    client.send_event(PRESS, **PLACE)
    client.send_event(PRESS, **{**PLACE, "addr": 9})
    assert len(events.take()) == 2
    assert (database.actions(), database.keys()) == before


def test_the_arguments_of_a_press_are_found_by_name_among_others_in_any_order(
    client, events, action, key
):
    client.send_event(PRESS, first="something", addr=2, aom_type=1, between=True, aom_key_num=5)
    assert events.take() == [module_key_pressed(key, action, exists=True)]


def test_a_press_may_come_from_any_peer_and_any_object(client, events, action, key):
    for path in ("/", "/com/velmora/Tessaro/Another"):
        client.path = path
        client.send_event(PRESS, **PLACE)
    assert events.take() == [module_key_pressed(key, action, exists=True)] * 2


def test_presses_are_told_in_the_order_in_which_they_came(client, events, key):
    for number in range(50):
        client.send_event(PRESS, **{**PLACE, "aom_key_num": number})
    assert [event.values["key"].position for event in events.take()] == list(range(50))


BAD_VALUES = {
    "a word": "five",
    "an empty text": "",
    "a structure": dbus.Struct((5, 6), signature="ii"),
    "a list": dbus.Array([5], signature="i"),
    "a number beyond 32 bits": dbus.Int64(2**32 + 5),
    "a number below 32 bits": dbus.Int64(-(2**31) - 1),
}


@pytest.mark.parametrize("value", BAD_VALUES.values(), ids=BAD_VALUES)
@pytest.mark.parametrize(
    "argument, named",
    [("aom_key_num", "aom_key_num"), ("aom_type", "aom_type"), ("addr", "aom_addr")],
    ids=["number", "module type", "address"],
)
def test_an_argument_that_is_not_a_number_is_named_and_the_press_dropped(
    service, client, events, key, argument, named, value
):
    client.send_event(PRESS, **{**PLACE, argument: value})
    assert events.take() == []
    assert service.log.take() == [bad_argument(named)]
    assert service.log.lines()[-1].level == "error"


OTHER_NUMBERS = {
    "a byte": dbus.Byte(5),
    "16 bits": dbus.Int16(5),
    "32 bits without a sign": dbus.UInt32(5),
    "64 bits": dbus.Int64(5),
    "a text of digits": "5",
}


@pytest.mark.parametrize("value", OTHER_NUMBERS.values(), ids=OTHER_NUMBERS)
def test_a_number_of_another_type_is_converted(client, events, action, key, value):
    client.send_event(PRESS, **{**PLACE, "aom_key_num": value})
    assert events.take() == [module_key_pressed(key, action, exists=True)]


@pytest.mark.parametrize(
    "argument, named",
    [("aom_key_num", "aom_key_num"), ("aom_type", "aom_type"), ("addr", "aom_addr")],
    ids=["number", "module type", "address"],
)
def test_an_argument_that_is_missing_is_named_and_the_press_dropped(
    service, client, events, key, argument, named
):
    client.send_event(PRESS, **{name: value for name, value in PLACE.items() if name != argument})
    assert events.take() == []
    assert service.log.take() == [bad_argument(named)]


def test_only_the_first_bad_argument_of_a_press_is_named(service, client, events, key):
    client.send_event(PRESS, addr="x", aom_type="y", aom_key_num=5)
    client.send_event(PRESS, addr="x", aom_type="y", aom_key_num="z")
    assert events.take() == []
    assert service.log.take() == [bad_argument("aom_type"), bad_argument("aom_key_num")]


@pytest.mark.parametrize(
    "signature, body",
    [
        ("s", [PRESS]),
        ("sas", [PRESS, ["aom_key_num"]]),
        ("sa(sv)", [PRESS, [("aom_key_num", 5)]]),
        ("sa{sv}", [PRESS, {"aom_key_num": 5}]),
        ("sa(svb)s", [PRESS, [("aom_key_num", 5, True)], "more"]),
    ],
    ids=["name alone", "texts", "no flags", "a map", "something more"],
)
def test_an_event_of_another_shape_is_warned_of_and_dropped(
    service, client, events, action, key, signature, body
):
    client.send_raw_event(signature, *body)
    assert events.take() == []
    (line,) = service.log.lines()[-1:]
    assert line.level == "warning"
    assert service.log.take() == [line.text]
    client.send_event(PRESS, **PLACE)
    assert events.take() == [module_key_pressed(key, action, exists=True)]


def test_other_events_are_not_listened_to(service, client, events, key):
    client.send_event("AOM_KEY_RELEASE_EVENT", **PLACE)
    client.send_event("aom_key_press_event", **PLACE)
    client.send_event("", **PLACE)
    assert events.take() == []
    assert service.log.take() == []


# Icons


def test_an_icon_state_is_passed_on_as_it_came(service, client, events, database, key):
    before = database.keys()
    assert client.set_icon_state_for_key(key.idKey, 17, -4) == 0
    assert events.take() == [icon_set(key, 17, -4)]
    assert database.keys() == before
    assert service.log.take() == sent("AOM_SET_ICON_PROPERTY_REC")


def test_the_module_type_and_not_the_type_lets_an_icon_be_set(
    service, client, events, action, store_key
):
    by_type_only = store_key(MODULE_KEY._replace(idAction=action.idAction, type=1, aom_type=2))
    by_module_type = store_key(
        SET_KEY._replace(idAction=action.idAction, type=0, aom_type=1, aom_addr=3)
    )
    assert client.set_icon_state_for_key(by_type_only.idKey, 1, 1) == -2
    assert events.take() == []
    assert service.log.take() == [not_a_module_key("setIconStateForKey", by_type_only.idKey)]
    assert client.set_icon_state_for_key(by_module_type.idKey, 1, 1) == 0
    assert events.take() == [icon_set(by_module_type, 1, 1)]


def test_an_unknown_key_has_no_icon(service, client, events, key):
    assert client.set_icon_state_for_key(99, 1, 1) == -2
    assert events.take() == []
    assert service.log.take() == [not_a_module_key("setIconStateForKey", 99)]
    assert service.log.lines()[-1].level == "error"


def test_an_icon_is_set_without_its_key_having_an_action(client, events, database, key):
    database.execute("DELETE FROM ACTION")
    assert client.set_icon_state_for_key(key.idKey, 1, 2) == 0
    assert events.take() == [icon_set(key, 1, 2)]


# Labels


def test_a_label_state_is_passed_on_with_the_short_label_of_the_action(
    service, client, events, action, key
):
    assert action.shortLabel != action.label
    assert client.set_label_state_for_key(key.idKey, 3) == 0
    assert events.take() == [label_set(key, action.shortLabel, 3)]
    assert service.log.take() == sent("AOM_SET_LABEL_PROPERTY_REC")


def test_the_module_type_and_not_the_type_lets_a_label_be_set(
    service, client, events, action, store_key
):
    by_type_only = store_key(MODULE_KEY._replace(idAction=action.idAction, type=1, aom_type=0))
    by_module_type = store_key(SET_KEY._replace(idAction=action.idAction, type=0, aom_type=1))
    assert client.set_label_state_for_key(by_type_only.idKey, 1) == -2
    assert events.take() == []
    assert service.log.take() == [not_a_module_key("setLabelStateForKey", by_type_only.idKey)]
    assert client.set_label_state_for_key(by_module_type.idKey, -1) == 0
    assert events.take() == [label_set(by_module_type, CALL.shortLabel, -1)]


def test_an_unknown_key_has_no_label(service, client, events, key):
    assert client.set_label_state_for_key(99, 1) == -2
    assert events.take() == []
    assert service.log.take() == [not_a_module_key("setLabelStateForKey", 99)]


def test_a_key_whose_action_is_gone_has_no_label(service, client, events, database, action, key):
    database.execute(f"DELETE FROM ACTION WHERE idAction = {action.idAction}")
    assert client.set_label_state_for_key(key.idKey, 1) == -2
    assert events.take() == []
    line = f"In setLabelStateForKey, internal error action does not exists, id[{action.idAction}]"
    assert service.log.take() == [line]
    assert service.log.lines()[-1].level == "error"
