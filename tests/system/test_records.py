"""The fields of keys and actions in replies, events and tables."""

from database import RESERVED_ACTION
from samples import action_created, action_modified, icon_set, key_created, key_modified
from sandbox.records import ACTION, KEY, Action, Key

# Each field has a different value, so that the tests detect swapped fields.
DISTINCT_KEY = Key(-1, "dm-11", -1, "container-13", 15, "icon-16", 1, 18, 19)
DISTINCT_ACTION = Action(
    -1, "dm-22", 23, "action-24", "web-25", "arguments-26", "label-27", "short-28"
)
OTHER_ACTION = Action(-1, "dm-a", 33, "action-b", "web-c", "arguments-d", "label-e", "short-f")


def test_a_key_has_the_same_nine_fields_in_replies_events_and_columns(
    service, client, events, database
):
    id_actions = [client.add_action(DISTINCT_ACTION), client.add_action(OTHER_ACTION)]
    events.take()
    key = DISTINCT_KEY._replace(idKey=1, idAction=id_actions[0])
    assert client.create_programmable_key(key) == 1
    changed = Key(1, "dm-a", id_actions[1], "container-c", 35, "icon-d", 36, 37, 38)

    def check(stored):
        # The rows are read by column name, and the replies by field order.
        assert database.keys() == [stored]
        assert client.get_programmable_key(1) == [stored]
        assert client.get_programmable_keys_by_container(stored.container) == [stored]
        assert client.get_all_programmable_keys() == [stored]

    check(key)
    assert client.modify_programmable_key(changed) == 0
    check(changed)
    assert events.take() == [key_created(key), icon_set(key), key_modified(changed)]


def test_an_action_has_the_same_eight_fields_in_replies_events_and_columns(
    service, client, events, database
):
    action = DISTINCT_ACTION._replace(idAction=1)
    assert client.add_action(action) == 1
    changed = OTHER_ACTION._replace(idAction=1)

    def check(stored):
        assert database.actions() == [RESERVED_ACTION, stored]
        assert client.get_action(1) == [stored]
        assert client.get_all_actions() == [RESERVED_ACTION, stored]

    check(action)
    assert client.modify_action(changed) == 0
    check(changed)
    assert events.take() == [action_created(action), action_modified(changed)]


def test_the_fields_of_a_key_have_their_documented_order(service, client):
    id_action = client.add_action(DISTINCT_ACTION)
    id_key = client.create_programmable_key(DISTINCT_KEY._replace(idAction=id_action))
    reply = client.call("getProgrammableKey", "x", id_key)
    assert reply.signature == "a(xsxsisiii)"
    ((wire,),) = reply.values
    assert tuple(wire) == (
        *(id_key, "dm-11", id_action, "container-13"),
        *(15, "icon-16", 1, 18, 19),
    )


def test_the_fields_of_an_action_have_their_documented_order(service, client):
    id_action = client.add_action(DISTINCT_ACTION)
    reply = client.call("getAction", "x", id_action)
    assert reply.signature == "a(xsisssss)"
    ((wire,),) = reply.values
    texts = ("action-24", "web-25", "arguments-26", "label-27", "short-28")
    assert tuple(wire) == (id_action, "dm-22", 23, *texts)


def test_an_empty_result_is_an_empty_array_of_records(service, client):
    for signature, reply in (
        (KEY, client.call("getAllProgrammableKeys")),
        (KEY, client.call("getProgrammableKeysByContainer", "s", "nowhere")),
        (KEY, client.call("getProgrammableKey", "x", 99)),
        (ACTION, client.call("getAction", "x", 99)),
    ):
        assert (reply.signature, reply.values) == (f"a{signature}", ([],))


def test_records_are_listed_in_the_order_of_their_ids(service, client):
    actions = [DISTINCT_ACTION._replace(shortLabel=text) for text in ("c", "a", "b")]
    actions = [action._replace(idAction=client.add_action(action)) for action in actions]
    keys = [
        DISTINCT_KEY._replace(idAction=action.idAction, position=9 - action.idAction)
        for action in actions
    ]
    keys = [key._replace(idKey=client.create_programmable_key(key)) for key in keys]
    assert client.get_all_actions() == [RESERVED_ACTION, *actions]
    assert client.get_all_programmable_keys() == keys
    assert client.get_programmable_keys_by_container("container-13") == keys


def test_the_reserved_action_has_type_minus_1_and_empty_texts(service, client):
    reserved = Action(-1, "", -1, "", "", "", "", "")
    assert client.get_all_actions() == [reserved]
    assert client.get_action(-1) == [reserved]


def test_empty_texts_are_stored_as_empty_texts_and_not_as_null(service, client, database):
    id_action = client.add_action(Action())
    client.create_programmable_key(Key(idAction=id_action))
    names = ("action", "webAppName", "arguments", "label", "shortLabel", "dmId")
    texts = ", ".join(f"typeof({name})" for name in names)
    assert database.rows(f"SELECT {texts} FROM ACTION WHERE idAction > 0") == [("text",) * 6]
    texts = "typeof(container), typeof(icon), typeof(dmId)"
    assert database.rows(f"SELECT {texts} FROM KEY") == [("text",) * 3]
