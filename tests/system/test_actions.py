"""Adding, reading, modifying and deleting actions, and the effects on their keys."""

import pytest

from database import RESERVED_ACTION, failing
from samples import (
    CALL,
    MODULE_KEY,
    SET_KEY,
    action_created,
    action_deleted,
    action_modified,
    key_deleted,
    label_set,
    sent,
)
from sandbox.records import Action

RESERVED_ACTION_REFUSAL = "Action of id -1 is read only and reserved. Deletion is forbidden."


@pytest.fixture
def store_keys(service, client, events):
    """Stores keys in order and takes their events and log lines."""

    def store(*keys):
        stored = [key._replace(idKey=client.create_programmable_key(key)) for key in keys]
        events.take()
        service.log.take()
        return stored

    return store


@pytest.fixture
def provisioned(service, client, events, action) -> Action:
    """A stored action with a device management id."""
    stored = action._replace(dmId="dm-1")
    assert client.modify_action(stored) == 0
    events.take()
    service.log.take()
    return stored


def bound(sample, action, **fields):
    return sample._replace(idAction=action.idAction, **fields)


# Adding


def test_an_added_action_gets_the_next_id_and_an_event_announces_it(
    service, client, events, database
):
    events.take()
    service.log.take()
    added = CALL._replace(idAction=client.add_action(CALL._replace(idAction=77)))
    assert added.idAction == 1
    assert events.take() == [action_created(added)]
    assert database.actions() == [RESERVED_ACTION, added]
    assert service.log.take() == sent("ACTION_CREATE_NTF")


def test_actions_are_added_whatever_their_content(client, database, action):
    samples = [
        Action(),
        CALL,
        CALL._replace(dmId="dm-1"),
        CALL._replace(idAction=1),
        CALL._replace(idAction=-1, type=-1),
    ]
    added = [sample._replace(idAction=2 + number) for number, sample in enumerate(samples)]
    assert [client.add_action(sample) for sample in samples] == [2, 3, 4, 5, 6]
    assert database.actions() == [RESERVED_ACTION, action, *added]


# Modifying


def test_a_modified_action_is_stored_and_an_event_has_all_its_fields(
    service, client, events, database, action
):
    changed = Action(
        action.idAction, "dm-5", 9, "open", "portal", "a,b", "Long", action.shortLabel
    )
    assert client.modify_action(changed) == 0
    assert database.actions() == [RESERVED_ACTION, changed]
    assert events.take() == [action_modified(changed)]
    assert service.log.take() == sent("ACTION_MODIFY_NTF")


def test_modifying_an_unknown_action_returns_minus_2_and_logs_one_error(
    service, client, events, database, action
):
    assert client.modify_action(action._replace(idAction=99)) == -2
    assert (
        service.log.take("error")
        == service.log.texts("error")
        == ["ZelProgrammableKeys::modifyAction(2) : fail !"]
    )
    assert events.take() == []
    assert database.actions() == [RESERVED_ACTION, action]


def test_a_changed_short_label_is_sent_to_the_module_keys_of_the_action_only(
    client, events, action, store_keys
):
    keys = store_keys(
        bound(MODULE_KEY, action, position=3, aom_addr=1),
        bound(SET_KEY, action),
        bound(MODULE_KEY, action, position=2, aom_type=2, aom_addr=7),
        bound(MODULE_KEY, action, position=1, aom_addr=1),
        bound(MODULE_KEY, RESERVED_ACTION),
        bound(MODULE_KEY, action, type=2),
    )
    changed = action._replace(shortLabel="New")
    assert client.modify_action(changed) == 0
    module_keys = [keys[0], keys[2], keys[3]]
    assert events.take() == [
        action_modified(changed),
        *(label_set(key, "New", 1) for key in module_keys),
    ]


def test_a_change_of_other_fields_sends_no_label(client, events, action, store_keys):
    store_keys(bound(MODULE_KEY, action))
    changed = action._replace(
        label="New", arguments="502", action="dial", webAppName="x", type=8, dmId="dm"
    )
    assert client.modify_action(changed) == 0
    assert events.take() == [action_modified(changed)]


def test_a_short_label_in_upper_case_and_an_empty_one_count_as_changed(
    client, events, action, store_keys
):
    (key,) = store_keys(bound(MODULE_KEY, action))
    for text in (action.shortLabel.upper(), ""):
        changed = action._replace(shortLabel=text)
        assert client.modify_action(changed) == 0
        assert events.take() == [action_modified(changed), label_set(key, text)]


def test_the_reserved_action_can_be_modified(
    client, events, database, action, store_keys
):
    (key,) = store_keys(bound(MODULE_KEY, RESERVED_ACTION))
    changed = Action(-1, "", 4, "none", "web", "args", "Nothing", "No")
    assert client.modify_action(changed) == 0
    assert database.actions() == [changed, action]
    assert events.take() == [action_modified(changed), label_set(key, "No")]


# Deleting


def test_an_action_is_deleted_and_an_event_has_its_id(
    service, client, events, database, action
):
    assert client.delete_action(action.idAction) == 0
    assert database.actions() == [RESERVED_ACTION]
    assert events.take() == [action_deleted(action.idAction)]
    assert service.log.take() == sent("ACTION_DELETE_NTF")


def test_the_reserved_action_cannot_be_deleted(
    service, client, events, database, action, store_keys
):
    keys = store_keys(bound(SET_KEY, RESERVED_ACTION))
    assert client.delete_action(-1) == -2
    assert service.log.take() == [RESERVED_ACTION_REFUSAL]
    assert service.log.lines()[-1].level == "error"
    assert database.actions() == [RESERVED_ACTION, action]
    assert database.keys() == keys
    assert events.take() == []
    database.execute("DELETE FROM ACTION")
    assert client.delete_action(-1) == -2
    assert service.log.take() == [RESERVED_ACTION_REFUSAL]


def test_deleting_an_unknown_action_returns_minus_2_and_logs_nothing(
    service, client, events, database, action
):
    assert client.delete_action(99) == -2
    assert service.log.take() == []
    assert events.take() == []
    assert database.actions() == [RESERVED_ACTION, action]


def test_a_provisioned_action_cannot_be_deleted_and_its_keys_stay(
    service, client, events, database, provisioned, store_keys
):
    keys = store_keys(bound(SET_KEY, provisioned), bound(MODULE_KEY, provisioned, dmId="dm-1"))
    assert client.delete_action(provisioned.idAction) == -2
    assert service.log.take() == []
    assert events.take() == []
    assert database.actions() == [RESERVED_ACTION, provisioned]
    assert database.keys() == keys


def test_deleting_an_action_deletes_its_user_keys_in_the_order_of_their_ids(
    client, events, database, action, store_keys
):
    first, other, second, provisioned, third = store_keys(
        bound(MODULE_KEY, action),
        bound(SET_KEY, RESERVED_ACTION),
        bound(SET_KEY, action),
        bound(SET_KEY, action, dmId="dm-1"),
        bound(SET_KEY, action, type=5),
    )
    assert client.delete_action(action.idAction) == 0
    deleted = [key_deleted(key.idKey) for key in (first, second, third)]
    assert events.take() == [*deleted, action_deleted(action.idAction)]
    assert database.actions() == [RESERVED_ACTION]
    # The provisioned key keeps the id of the deleted action.
    assert database.keys() == [other, provisioned]


def test_an_action_is_deleted_even_if_one_of_its_keys_cannot_be_deleted(
    service, client, events, database, action, store_keys
):
    first, stuck, last = store_keys(*[bound(SET_KEY, action)] * 3)
    database.execute(failing("DELETE", "KEY", f"OLD.idKey = {stuck.idKey}").trigger)
    assert client.delete_action(action.idAction) == 0
    assert events.take() == [
        key_deleted(first.idKey),
        key_deleted(last.idKey),
        action_deleted(action.idAction),
    ]
    assert database.keys() == [stuck]
    assert len(service.log.take("error")) == 1


def test_reading_actions_sends_and_logs_nothing(service, client, events, action):
    client.get_all_actions()
    client.get_action(action.idAction)
    client.get_action(99)
    assert events.take() == []
    assert service.log.take() == []
