"""Extreme numbers, and texts that others stumble over: stored, told and returned unchanged."""

import pytest

from database import RESERVED_ACTION
from samples import (
    CALL,
    MODULE_KEY,
    SET_KEY,
    action_created,
    action_deleted,
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
    "a mebibyte": "0123456789abcdef" * (MEBIBYTE // 16),
    "a mebibyte of Unicode": "電話🙂é" * (MEBIBYTE // 12),
    "single quotes": "it's ''quoted''",
    "double quotes": 'say "hello" and ""',
    "SQL": "x'); DROP TABLE KEY; DROP TABLE ACTION; --",
    "SQL that opens a comment": "/* '",
    "SQL that is true": "' OR '1'='1",
    "placeholders of SQL": "? ?1 :a :name @b $c",
    "placeholders of texts": "%1 %2 %L1 %% %s %n",
    "wildcards": "%_*[a-z]?",
    "backslashes": "\\ \\n \\0 \\' \\\\",
    "control characters": "".join(map(chr, range(1, 32))) + "\x7f\x80\x9f",
    "line ends": "\none\r\ntwo\n",
    "blanks around": "  \t around \u00a0\u3000 ",
    "a number": "007",
    "a large number": "1e999",
    "another number": "0x10",
    "the word null": "NULL",
    "right to left": "שלום \u202eהפוך\u202c",
    "combined accents": "e\u0301 is not é",
    "outside the basic plane": "🙂👩‍👩‍👧𝔘\U0010fffd",
    "a mark within": "a\ufeffb",
    "unassigned": "\ufdd0\ue000\u0378\U000e0001",
    "separators of settings": "a,b#c\\,d\\#e escComa escSharp",
    "markup": '<arg type="x"/>&amp;]]>',
}


@pytest.fixture(params=TEXTS.values(), ids=list(TEXTS))
def text(request) -> str:
    return request.param


def test_every_text_field_of_an_action_keeps_any_text(service, client, events, database, text):
    action = Action(-1, text, 1, text, text, text, text, text)
    action = action._replace(idAction=client.add_action(action))
    assert events.take() == [action_created(action)]
    assert database.actions() == [RESERVED_ACTION, action]
    assert client.get_action(action.idAction) == [action]
    assert client.get_all_actions() == [RESERVED_ACTION, action]
    assert client.modify_action(action) == 0
    assert database.actions() == [RESERVED_ACTION, action]


def test_every_text_field_of_a_key_keeps_any_text(service, client, events, database, text):
    key = Key(-1, text, -1, text, 1, text, 2, 3, 4)
    key = key._replace(idKey=client.create_programmable_key(key))
    assert events.take() == [key_created(key)]
    assert database.keys() == [key]
    assert client.get_programmable_key(key.idKey) == [key]
    assert client.get_programmable_keys_by_container(text) == [key]
    assert client.get_programmable_keys_by_container(f"{text}.") == []
    assert client.modify_programmable_key(key) == 0
    assert database.keys() == [key]
    assert client.delete_programmable_key(key.idKey) == -2


def test_a_short_label_reaches_a_module_key_unchanged(client, events, action, text):
    key = MODULE_KEY._replace(idAction=action.idAction)
    key = key._replace(idKey=client.create_programmable_key(key))
    changed = action._replace(shortLabel=text)
    assert client.modify_action(changed) == 0
    assert events.take()[-1] == label_set(key, text)
    client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=5, aom_type=1, addr=2)
    assert events.take() == [module_key_pressed(key, changed, exists=True)]


def test_an_unchanged_text_is_seen_to_be_unchanged(client, events, action, text):
    key = MODULE_KEY._replace(idAction=action.idAction, icon=text)
    key = key._replace(idKey=client.create_programmable_key(key))
    events.take()
    assert client.modify_programmable_key(key) == 0
    assert events.take() == [key_modified(key)]


def test_a_capability_of_any_name_is_a_default_one(service, client, text):
    assert client.get_capability(text) == ("", 0)
    assert client.get_capability(text, INT_MIN) == ("", 0)


# Numbers


@pytest.mark.parametrize("number", [INT_MIN, -1, 0, 1, INT_MAX])
def test_every_number_of_a_key_keeps_its_edges(client, events, database, action, number):
    key = Key(-1, "", action.idAction, "", number, "", number, number, number)
    key = key._replace(idKey=client.create_programmable_key(key))
    assert events.take()[0] == key_created(key)
    assert database.keys() == [key]
    assert client.get_all_programmable_keys() == [key]


@pytest.mark.parametrize("number", [INT_MIN, -1, 0, 1, INT_MAX])
def test_the_type_of_an_action_keeps_its_edges(service, client, events, number):
    added = CALL._replace(type=number)
    added = added._replace(idAction=client.add_action(added))
    assert events.take() == [action_created(added)]
    assert client.get_action(added.idAction) == [added]


@pytest.mark.parametrize("position", [INT_MIN, -1, 0, INT_MAX])
def test_a_key_may_be_moved_to_any_position(client, database, action, position):
    id_key = client.create_programmable_key(SET_KEY._replace(idAction=action.idAction))
    assert (
        client.change_programmable_keys_position({id_key: position, INT_MIN: 1, INT_MAX: 1})
        is True
    )
    assert [key.position for key in database.keys()] == [position]


@pytest.mark.parametrize("number", [INT_MIN, -1, INT_MAX])
def test_a_module_key_may_be_anywhere(client, events, action, number):
    key = MODULE_KEY._replace(idAction=action.idAction, position=number, aom_addr=number)
    key = key._replace(idKey=client.create_programmable_key(key))
    assert client.set_icon_state_for_key(key.idKey, number, number) == 0
    assert client.set_label_state_for_key(key.idKey, number) == 0
    client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=number, aom_type=1, addr=number)
    assert events.take() == [
        key_created(key),
        icon_set(key),
        icon_set(key, number, number),
        label_set(key, action.shortLabel, number),
        module_key_pressed(key, action, exists=True),
    ]


def test_ids_beyond_32_bits_are_given_told_and_found(client, events, database, action):
    beyond = 2**40
    database.execute(
        f"INSERT INTO sqlite_sequence (name, seq) VALUES ('KEY', {beyond})",
        f"UPDATE sqlite_sequence SET seq = {beyond} WHERE name = 'ACTION'",
    )
    large = CALL._replace(idAction=client.add_action(CALL))
    assert large.idAction == beyond + 1
    key = SET_KEY._replace(idAction=large.idAction)
    key = key._replace(idKey=client.create_programmable_key(key))
    assert key.idKey == beyond + 1
    assert events.take() == [action_created(large), key_created(key)]
    assert client.get_programmable_key(key.idKey) == [key]
    assert client.get_action(large.idAction) == [large]
    assert client.get_programmable_key(key.idKey & 0xFFFFFFFF) == []
    assert client.delete_action(large.idAction) == 0
    assert events.take() == [key_deleted(key.idKey), action_deleted(large.idAction)]
    assert database.keys() == []


@pytest.mark.parametrize("number", [LONG_MIN, -(2**32), -2, 0, 2**32 + 1, LONG_MAX])
def test_an_id_that_nobody_has_is_unknown_everywhere(
    service, client, events, database, action, number
):
    before = database.actions()
    assert client.get_programmable_key(number) == []
    assert client.get_action(number) == []
    assert client.delete_programmable_key(number) == -2
    assert client.delete_action(number) == -2
    assert client.create_programmable_key(SET_KEY._replace(idAction=number)) == -2
    assert service.log.take("error") == [f"Action of id {number} does not exist"]
    assert (
        client.modify_programmable_key(SET_KEY._replace(idKey=number, idAction=action.idAction))
        == -2
    )
    assert client.modify_action(CALL._replace(idAction=number)) == -2
    assert client.set_icon_state_for_key(number, 1, 1) == -2
    assert client.set_label_state_for_key(number, 1) == -2
    assert service.log.take("error") == [
        "ZelProgrammableKeys::modifyAction(2) : fail !",
        f"In setIconStateForKey, not an aom key, id[{number}]",
        f"In setLabelStateForKey, not an aom key, id[{number}]",
    ]
    assert events.take() == []
    assert (database.actions(), database.keys()) == (before, [])


@pytest.mark.parametrize("number", [LONG_MIN, LONG_MAX, 2**32])
def test_records_of_extreme_ids_are_worked_on_like_others(
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


def test_a_thousand_keys_are_read_in_one_reply(client, events, action, database):
    keys = [
        SET_KEY._replace(idKey=number + 1, idAction=action.idAction, position=number)
        for number in range(1000)
    ]
    database.insert(*keys)
    assert client.get_all_programmable_keys() == keys


def test_a_reply_of_many_mebibytes_arrives_whole(service, client, database):
    large = TEXTS["a mebibyte of Unicode"]
    actions = [
        Action(number, large, 1, large, large, large, large, large) for number in range(1, 4)
    ]
    database.insert(*actions)
    assert client.get_all_actions() == [RESERVED_ACTION, *actions]


def test_a_text_that_begins_like_one_of_swapped_bytes_is_stored_as_it_is(service, client, database):
    id_action = client.add_action(CALL._replace(label="\ufffeabc"))
    assert database.actions()[-1].label == "\ufffeabc"
    (stored,) = client.get_action(id_action)
    assert stored.label == "\ufffdabc"  # what SQLite reads for this character anywhere
