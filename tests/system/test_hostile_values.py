"""Extreme numbers and unusual texts in records."""

import pytest

from database import RESERVED_ACTION
from samples import (
    CALL,
    MODULE_KEY,
    SET_KEY,
    action_created,
    action_deleted,
    action_modified,
    icon_set,
    key_created,
    key_deleted,
    key_modified,
    label_set,
    module_key_pressed,
)
from sandbox.records import Action, Key

MEBIBYTE = 2**20
INT_MIN, INT_MAX = -(2**31), 2**31 - 1
LONG_MIN, LONG_MAX = -(2**63), 2**63 - 1

TEXTS = {
    "an empty text": "",
    "a mebibyte of Unicode": "電話🙂é" * (MEBIBYTE // 12),
    "quotes": "it's ''quoted'' and \"quoted\"",
    "SQL": "x'); DROP TABLE KEY; --",
    "an SQL comment": "/* '",
    "SQL placeholders": "? ?1 :a :name @b $c",
    "format placeholders": "%1 %2 %L1 %% %s %n",
    "wildcards": "%_*[a-z]?",
    "backslashes": "\\ \\n \\0 \\' \\\\",
    "control characters": "".join(map(chr, range(1, 32))) + "\x7f\x80\x9f",
    "outer spaces and line breaks": "  \t\r\n around \u00a0\u3000 \n",
    "a number": "007",
    "a large number": "1e999",
    "the word null": "NULL",
    "right to left": "שלום \u202eהפוך\u202c",
    "combined accents": "e\u0301 is not é",
    "characters outside the basic plane": "🙂👩‍👩‍👧𝔘\U0010fffd",
    "a byte order mark that is not at the start": "a\ufeffb\ufeff",
    "unassigned characters": "\ufdd0\ue000\u0378\U000e0001",
    "separators of settings": "a,b#c\\,d\\#e escComa escSharp",
    "markup": '<arg type="x"/>&amp;]]>',
}


@pytest.mark.parametrize("text", TEXTS.values(), ids=TEXTS)
def test_a_text_is_stored_sent_and_returned_unchanged_and_can_be_searched(
    service, client, events, database, text
):
    action = Action(1, f"D{text}", 1, text, text, text, text, "other")
    changed = action._replace(dmId=text, shortLabel=text)
    key = Key(1, text, 1, text, 5, text, 1, 1, 2)
    assert client.add_action(action) == 1
    assert client.create_programmable_key(key) == 1
    assert client.modify_action(changed) == 0
    assert client.modify_programmable_key(key) == 0
    client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=5, aom_type=1, addr=2)
    # The icon is not set again, because its text has not changed.
    assert events.take() == [
        action_created(action),
        key_created(key),
        icon_set(key),
        action_modified(changed),
        label_set(key, text),
        key_modified(key),
        module_key_pressed(key, changed, exists=True),
    ]
    assert (database.actions(), database.keys()) == ([RESERVED_ACTION, changed], [key])
    assert client.get_action(1) == [changed]
    assert client.get_programmable_keys_by_container(text) == [key]
    assert client.get_programmable_keys_by_container(f"{text}.") == []
    assert client.get_capability(text) == ("", 0)


@pytest.mark.parametrize(
    "text, stored, returned",
    [
        ("\ufeff\ufeff", "\ufeff", "\ufeff"),
        ("\ufeff\ufeffab", "\ufeffab", "\ufeffab"),
        ("\ufeff\ufeff\ufeffab", "\ufeff\ufeffab", "\ufeff\ufeffab"),
        ("\ufeff\ufeff\ufffe", "\ufeff\ufffe", "\ufeff\ufffd"),
        ("\ufffeabc", "\ufffeabc", "\ufffdabc"),
        ("\ufffe\ufeff", "\ufffe\ufeff", "\ufffd\ufeff"),
        ("\uffff", "\uffff", "\ufffd"),
        ("a\uffff", "a\uffff", "a\ufffd"),
    ],
    ids=ascii,
)
def test_a_leading_byte_order_mark_or_noncharacter_does_not_change_the_rest_of_a_text(
    service, client, database, text, stored, returned
):
    # The bus library removes the first mark. SQLite replaces a noncharacter.
    id_action = client.add_action(CALL._replace(label=text))
    assert database.actions()[-1].label == stored
    assert client.get_action(id_action)[0].label == returned


@pytest.mark.parametrize("number", [INT_MIN, -1, 0, INT_MAX])
def test_a_32_bit_number_is_stored_sent_and_returned_unchanged(
    service, client, events, database, number
):
    action = CALL._replace(idAction=1, type=number)
    key = Key(1, "", 1, "", number, "", number, number, number)
    module_key = MODULE_KEY._replace(idKey=2, idAction=1, aom_addr=number)
    moved = module_key._replace(position=number)
    assert client.add_action(action) == 1
    assert client.create_programmable_key(key) == 1
    assert client.create_programmable_key(module_key) == 2
    assert client.change_programmable_keys_position({2: number, INT_MIN: 1, INT_MAX: 1}) is True
    assert client.set_icon_state_for_key(2, number, number) == 0
    assert client.set_label_state_for_key(2, number) == 0
    client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=number, aom_type=1, addr=number)
    assert events.take() == [
        action_created(action),
        key_created(key),
        key_created(module_key),
        icon_set(module_key),
        icon_set(moved, number, number),
        label_set(moved, action.shortLabel, number),
        module_key_pressed(moved, action, exists=True),
    ]
    assert database.keys() == [key, moved]
    assert client.get_all_programmable_keys() == [key, moved]
    assert client.get_action(1) == [action]


def test_ids_of_more_than_32_bits_are_assigned_sent_and_found(client, events, database, action):
    beyond = 2**40
    database.execute(
        f"INSERT INTO sqlite_sequence (name, seq) VALUES ('KEY', {beyond})",
        f"UPDATE sqlite_sequence SET seq = {beyond} WHERE name = 'ACTION'",
    )
    large = CALL._replace(idAction=beyond + 1)
    key = SET_KEY._replace(idKey=beyond + 1, idAction=beyond + 1)
    assert client.add_action(large) == beyond + 1
    assert client.create_programmable_key(key) == beyond + 1
    assert events.take() == [action_created(large), key_created(key)]
    assert client.get_programmable_key(key.idKey) == [key]
    assert client.get_programmable_key(key.idKey & 0xFFFFFFFF) == []


@pytest.mark.parametrize("number", [LONG_MIN, LONG_MAX, 2**32])
def test_records_can_have_extreme_ids(
    client, events, database, action, number
):
    database.insert(
        CALL._replace(idAction=number), MODULE_KEY._replace(idKey=number, idAction=number)
    )
    key = MODULE_KEY._replace(idKey=number, idAction=number, container="other")
    assert client.get_action(number) == [CALL._replace(idAction=number)]
    assert client.modify_programmable_key(key) == 0
    assert client.get_programmable_key(number) == [key]
    assert client.set_label_state_for_key(number, 4) == 0
    assert client.delete_action(number) == 0
    assert events.take() == [
        key_modified(key),
        label_set(key, CALL.shortLabel, 4),
        key_deleted(number),
        action_deleted(number),
    ]
    assert database.keys() == []


@pytest.mark.parametrize("number", [LONG_MIN, -(2**32), 2**32 + 1, LONG_MAX])
def test_every_operation_refuses_an_extreme_id_without_a_record(
    service, client, events, database, action, number
):
    before = database.actions()
    service.log.take()
    assert client.get_action(number) == []
    assert client.get_programmable_key(number) == []
    assert client.delete_action(number) == -2
    assert client.delete_programmable_key(number) == -2
    assert client.modify_action(action._replace(idAction=number)) == -2
    key = SET_KEY._replace(idKey=number, idAction=action.idAction)
    assert client.modify_programmable_key(key) == -2
    assert client.set_icon_state_for_key(number, 1, 1) == -2
    assert client.set_label_state_for_key(number, 1) == -2
    assert service.log.take("error") == [
        "ZelProgrammableKeys::modifyAction(2) : fail !",
        f"In setIconStateForKey, not an aom key, id[{number}]",
        f"In setLabelStateForKey, not an aom key, id[{number}]",
    ]
    assert events.take() == []
    assert (database.actions(), database.keys()) == (before, [])


def test_a_thousand_keys_or_many_mebibytes_fit_into_one_reply(
    client, action, database
):
    keys = [SET_KEY._replace(idKey=1 + number, position=number) for number in range(1000)]
    large = TEXTS["a mebibyte of Unicode"]
    actions = [Action(number, large, 1, large, large, large, large, large) for number in (2, 3)]
    database.insert(*keys, *actions)
    assert client.get_all_programmable_keys() == keys
    assert client.get_all_actions() == [RESERVED_ACTION, action, *actions]
