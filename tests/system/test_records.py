"""Keys and actions on the wire, in events and in the tables."""

from database import RESERVED_ACTION
from samples import action_created, key_created
from sandbox.records import ACTION, KEY, Action, Key

# Every field has a value that no other field has, so that no two can be swapped unseen.
DISTINCT_KEY = Key(-1, "dm-11", -1, "container-13", 15, "icon-16", 7, 18, 19)
DISTINCT_ACTION = Action(
    -1, "dm-22", 23, "action-24", "web-25", "arguments-26", "label-27", "short-28"
)


def store(client):
    action = DISTINCT_ACTION._replace(idAction=client.add_action(DISTINCT_ACTION))
    key = DISTINCT_KEY._replace(idAction=action.idAction)
    return key._replace(idKey=client.create_programmable_key(key)), action


def test_a_key_keeps_all_nine_fields_on_every_way_back(service, client, events):
    key, _action = store(client)
    assert client.get_programmable_key(key.idKey) == [key]
    assert client.get_programmable_keys_by_container(key.container) == [key]
    assert client.get_all_programmable_keys() == [key]
    assert events.take()[1:] == [key_created(key)]


def test_a_key_travels_as_id_dm_id_action_container_position_icon_type_and_module(service, client):
    key, action = store(client)
    reply = client.call("getProgrammableKey", "x", key.idKey)
    assert reply.signature == "a(xsxsisiii)"
    ((wire,),) = reply.values
    assert tuple(wire) == (
        key.idKey,
        "dm-11",
        action.idAction,
        "container-13",
        15,
        "icon-16",
        7,
        18,
        19,
    )


def test_each_field_of_a_key_is_stored_in_the_column_of_its_name(service, client, database):
    key, action = store(client)
    columns = "idKey, dmId, container, idAction, position, icon, type, aom_type, aom_addr"
    stored = (key.idKey, "dm-11", "container-13", action.idAction, 15, "icon-16", 7, 18, 19)
    assert database.rows(f"SELECT {columns} FROM KEY") == [stored]


def test_modifying_a_key_changes_every_column_but_its_id(service, client, database):
    key, _action = store(client)
    other = client.add_action(DISTINCT_ACTION)
    changed = Key(key.idKey, "dm-a", other, "container-c", 35, "icon-d", 36, 37, 38)
    assert client.modify_programmable_key(changed) == 0
    assert database.keys() == [changed]
    assert client.get_all_programmable_keys() == [changed]


def test_an_action_keeps_all_eight_fields_on_every_way_back(service, client, events):
    _key, action = store(client)
    assert client.get_action(action.idAction) == [action]
    assert client.get_all_actions() == [RESERVED_ACTION, action]
    assert events.take()[:1] == [action_created(action)]


def test_an_action_travels_as_id_dm_id_type_action_web_application_arguments_and_labels(
    service, client
):
    _key, action = store(client)
    reply = client.call("getAction", "x", action.idAction)
    assert reply.signature == "a(xsisssss)"
    ((wire,),) = reply.values
    texts = ("action-24", "web-25", "arguments-26", "label-27", "short-28")
    assert tuple(wire) == (action.idAction, "dm-22", 23, *texts)


def test_each_field_of_an_action_is_stored_in_the_column_of_its_name(service, client, database):
    _key, action = store(client)
    columns = "idAction, dmId, type, action, webAppName, arguments, label, shortLabel"
    stored = (
        action.idAction,
        "dm-22",
        23,
        "action-24",
        "web-25",
        "arguments-26",
        "label-27",
        "short-28",
    )
    assert database.rows(f"SELECT {columns} FROM ACTION WHERE idAction > 0") == [stored]


def test_modifying_an_action_changes_every_column_but_its_id(service, client, database):
    _key, action = store(client)
    changed = Action(
        action.idAction, "dm-a", 33, "action-b", "web-c", "arguments-d", "label-e", "short-f"
    )
    assert client.modify_action(changed) == 0
    assert database.actions() == [RESERVED_ACTION, changed]
    assert client.get_action(action.idAction) == [changed]


def test_an_empty_list_of_keys_is_an_empty_array_of_keys(service, client):
    for reply in (
        client.call("getAllProgrammableKeys"),
        client.call("getProgrammableKeysByContainer", "s", "nowhere"),
        client.call("getProgrammableKey", "x", 99),
    ):
        assert (reply.signature, reply.values) == (f"a{KEY}", ([],))


def test_an_empty_list_of_actions_is_an_empty_array_of_actions(service, client):
    reply = client.call("getAction", "x", 99)
    assert (reply.signature, reply.values) == (f"a{ACTION}", ([],))


def test_several_records_come_in_the_order_of_their_ids(service, client):
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


def test_empty_texts_are_stored_as_texts_and_not_as_nothing(service, client, database):
    id_action = client.add_action(Action())
    client.create_programmable_key(Key(idAction=id_action))
    names = ("action", "webAppName", "arguments", "label", "shortLabel", "dmId")
    texts = ", ".join(f"typeof({name})" for name in names)
    assert database.rows(f"SELECT {texts} FROM ACTION WHERE idAction > 0") == [("text",) * 6]
    assert database.rows("SELECT typeof(container), typeof(icon), typeof(dmId) FROM KEY") == [
        ("text",) * 3
    ]
