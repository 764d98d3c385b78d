"""Keys on add-on modules: presses, icons and labels."""

import math

import dbus
import pytest

from samples import CALL, MODULE_KEY, SET_KEY, icon_set, label_set, module_key_pressed, sent
from sandbox.records import Action, Key

PRESS = "AOM_KEY_PRESS_EVENT"
PLACE = {"aom_key_num": 5, "aom_type": 1, "addr": 2}

NAMES = {"aom_key_num": "aom_key_num", "aom_type": "aom_type", "addr": "aom_addr"}
"""The arguments of a press, and their names in error lines."""

INT_MIN, INT_MAX = -(2**31), 2**31 - 1


def invalid_argument(name):
    return f"Argument {NAMES[name]} passed to event {PRESS} has got an invalid value."


def not_a_module_key(method, id_key):
    return f"In {method}, not an aom key, id[{id_key}]"


def unprogrammed(aom_key_num, aom_type, addr):
    """The event for a press at a position without a stored key."""
    key = Key(type=1, position=aom_key_num, aom_type=aom_type, aom_addr=addr)
    return module_key_pressed(key, Action(), exists=False)


@pytest.fixture
def store_key(service, client, events):
    """Stores a key and takes its events and log lines."""

    def store(key):
        stored = key._replace(idKey=client.create_programmable_key(key))
        events.take()
        service.log.take()
        return stored

    return store


@pytest.fixture
def key(action, store_key) -> Key:
    """A stored module key at `PLACE`."""
    return store_key(MODULE_KEY._replace(idAction=action.idAction))


# Presses


def test_a_press_of_a_stored_key_is_reported_with_the_key_and_its_action(
    service, client, events, database, action, key
):
    before = database.actions(), database.keys()
    client.send_event(PRESS, **PLACE)
    assert events.take() == [module_key_pressed(key, action, exists=True)]
    assert service.log.take() == sent("AOMKEY_PRESS_NTF")
    assert (database.actions(), database.keys()) == before


def test_a_press_at_a_position_without_a_key_is_reported_with_the_position_only(
    service, client, events, action, key
):
    places = [{**PLACE, "aom_key_num": 6}, {**PLACE, "aom_type": 2}, {**PLACE, "addr": 3}]
    for place in places:
        client.send_event(PRESS, **place)
    assert events.take() == [unprogrammed(**place) for place in places]


@pytest.mark.parametrize("type_of_key", [0, 2, -1], ids=lambda number: f"type {number}")
def test_a_key_of_another_type_is_not_found_by_a_press(
    client, events, action, store_key, type_of_key
):
    store_key(MODULE_KEY._replace(idAction=action.idAction, type=type_of_key))
    client.send_event(PRESS, **PLACE)
    assert events.take() == [unprogrammed(**PLACE)]


def test_a_press_at_a_position_with_several_keys_is_reported_with_the_first_key(
    client, events, action, key, store_key
):
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


def test_the_arguments_of_a_press_can_have_any_order_and_the_first_of_a_name_counts(
    client, events, action, key
):
    client.send_event(PRESS, first="something", addr=2, aom_type=1, between=True, aom_key_num=5)
    repeated = [*((name, value, True) for name, value in PLACE.items()), ("addr", 9, True)]
    client.send_raw_event("sa(svb)", PRESS, repeated)
    assert events.take() == [module_key_pressed(key, action, exists=True)] * 2


def test_presses_from_any_object_are_reported_in_order(client, events, key):
    for number in range(50):
        client.path = "/" if number % 2 else "/com/velmora/Tessaro/Another"
        client.send_event(PRESS, **{**PLACE, "aom_key_num": number})
    assert [event.values["key"].position for event in events.take()] == list(range(50))


def test_an_argument_of_any_type_with_a_32_bit_value_is_accepted(client, events, service):
    events.take()
    numbers = [
        (dbus.Int32(INT_MIN), INT_MIN),
        (dbus.Int64(INT_MAX), INT_MAX),
        (dbus.Byte(200), 200),
        (dbus.Int16(-300), -300),
        (dbus.UInt16(60000), 60000),
        (dbus.UInt32(7), 7),
        (dbus.UInt64(9), 9),
        (dbus.Double(INT_MIN), INT_MIN),
        (dbus.Boolean(True), 1),
        ("12", 12),
        ("-12", -12),
    ]
    for value, _number in numbers:
        for argument in PLACE:
            client.send_event(PRESS, **{**PLACE, argument: value})
    assert events.take() == [
        unprogrammed(**{**PLACE, argument: number})
        for _value, number in numbers
        for argument in PLACE
    ]
    assert service.log.texts("error") == []


@pytest.mark.parametrize("argument", PLACE)
def test_a_press_with_an_argument_that_is_not_a_32_bit_number_is_logged_and_dropped(
    service, client, events, key, argument
):
    values = [
        *("five", "", "5a", "0x5", "5.5", "4294967301"),
        *(dbus.Int64(2**32 + 5), dbus.Int64(INT_MIN - 1), dbus.Int64(INT_MAX + 1)),
        *(dbus.UInt32(2**32 - 1), dbus.UInt64(2**64 - 1)),
        *(4294967301.0, 1e300, math.inf, -math.inf, math.nan),
        *(dbus.Struct((5, 6), signature="ii"), dbus.Array([5], signature="i")),
        dbus.Dictionary({5: 5}, signature="ii"),
    ]
    for value in values:
        client.send_event(PRESS, **{**PLACE, argument: value})
        assert events.take() == [], repr(value)
        assert service.log.take() == [invalid_argument(argument)], repr(value)
    assert service.log.lines()[-1].level == "error"


def test_a_press_without_an_argument_is_logged_and_dropped(service, client, events, key):
    for argument in PLACE:
        client.send_event(PRESS, **{name: PLACE[name] for name in PLACE if name != argument})
    client.send_event(PRESS, aom_key_num=5, aom_type=1, aom_addr=2)
    assert events.take() == []
    assert service.log.take() == [*map(invalid_argument, PLACE), invalid_argument("addr")]


def test_only_the_first_invalid_argument_of_a_press_is_logged(service, client, events, key):
    client.send_event(PRESS, addr="x", aom_type="y", aom_key_num=5)
    client.send_event(PRESS, addr="x", aom_type="y", aom_key_num="z")
    assert events.take() == []
    assert service.log.take() == [invalid_argument("aom_type"), invalid_argument("aom_key_num")]


def test_an_event_with_a_wrong_signature_is_logged_as_a_warning_and_dropped(
    service, client, events, action, key
):
    for signature, *body in [
        ("s", PRESS),
        ("sas", PRESS, ["aom_key_num"]),
        ("sa(sv)", PRESS, [("aom_key_num", 5)]),
        ("sa{sv}", PRESS, {"aom_key_num": 5}),
        ("sa(svb)s", PRESS, [("aom_key_num", 5, True)], "more"),
    ]:
        client.send_raw_event(signature, *body)
        assert events.take() == [], signature
        assert len(service.log.take()) == 1, signature
        assert service.log.lines()[-1].level == "warning", signature
    client.send_event(PRESS, **PLACE)
    assert events.take() == [module_key_pressed(key, action, exists=True)]


def test_events_with_other_names_are_ignored(service, client, events, key):
    client.send_event("AOM_KEY_RELEASE_EVENT", **PLACE)
    client.send_event("aom_key_press_event", **PLACE)
    client.send_event("", **PLACE)
    assert events.take() == []
    assert service.log.take() == []


# Icons


def test_an_icon_state_is_sent_unchanged_and_not_stored(service, client, events, database, key):
    assert client.set_icon_state_for_key(key.idKey, 17, -4) == 0
    assert events.take() == [icon_set(key, 17, -4)]
    assert database.keys() == [key]
    assert service.log.take() == sent("AOM_SET_ICON_PROPERTY_REC")


def test_an_icon_is_set_even_if_the_key_has_no_action(client, events, database, key):
    database.execute("DELETE FROM ACTION")
    assert client.set_icon_state_for_key(key.idKey, 1, 2) == 0
    assert events.take() == [icon_set(key, 1, 2)]


# Labels


def test_a_label_state_is_sent_with_the_short_label_of_the_action(
    service, client, events, action, key
):
    assert action.shortLabel != action.label
    assert client.set_label_state_for_key(key.idKey, 3) == 0
    assert events.take() == [label_set(key, action.shortLabel, 3)]
    assert service.log.take() == sent("AOM_SET_LABEL_PROPERTY_REC")


def test_setting_the_label_of_a_key_without_its_action_is_rejected(
    service, client, events, database, action, key
):
    database.execute(f"DELETE FROM ACTION WHERE idAction = {action.idAction}")
    assert client.set_label_state_for_key(key.idKey, 1) == -2
    assert events.take() == []
    line = f"In setLabelStateForKey, internal error action does not exists, id[{action.idAction}]"
    assert service.log.take() == service.log.texts("error")[-1:] == [line]


# Icons and labels


@pytest.mark.parametrize("aom_type", [0, 2, -1], ids=lambda number: f"module type {number}")
def test_setting_the_icon_or_label_of_a_key_with_another_module_type_is_rejected(
    service, client, events, action, store_key, aom_type
):
    key = store_key(MODULE_KEY._replace(idAction=action.idAction, type=1, aom_type=aom_type))
    assert client.set_icon_state_for_key(key.idKey, 1, 1) == -2
    assert client.set_label_state_for_key(key.idKey, 1) == -2
    assert events.take() == []
    lines = [
        not_a_module_key("setIconStateForKey", key.idKey),
        not_a_module_key("setLabelStateForKey", key.idKey),
    ]
    assert service.log.take() == service.log.texts("error")[-2:] == lines


def test_the_icon_and_the_label_of_a_key_on_the_set_with_module_type_1_are_set(
    client, events, action, store_key
):
    key = store_key(SET_KEY._replace(idAction=action.idAction, type=0, aom_type=1, aom_addr=3))
    assert client.set_icon_state_for_key(key.idKey, 1, 1) == 0
    assert client.set_label_state_for_key(key.idKey, -1) == 0
    assert events.take() == [icon_set(key, 1, 1), label_set(key, CALL.shortLabel, -1)]


def test_setting_the_icon_or_label_of_an_unknown_key_is_rejected(service, client, events, key):
    assert client.set_icon_state_for_key(99, 1, 1) == -2
    assert client.set_label_state_for_key(99, 1) == -2
    assert events.take() == []
    assert service.log.take() == [
        not_a_module_key("setIconStateForKey", 99),
        not_a_module_key("setLabelStateForKey", 99),
    ]
